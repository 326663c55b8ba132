// A host's work on a store, in steps that do not depend on one another.
#pragma once

#include "zebstore/base/Object.h"
#include "zebstore/objects/StoreContext.h"

#include <string>
#include <utility>
#include <vector>

namespace zebstore::test
{

/// Makes a store file with what the steps work on: its messages and folders have fixed numbers.
/// @param indexed with a text index
void MakeStoreToWorkOn(const std::string& path, bool indexed);

/// A failed step.
struct StepFailure
{
    std::string step;
    HRESULT code = S_OK;
    std::string text; ///< for people
};

/// Works through MAPI's interfaces. A step that fails is reported and the next one begun, and a save that failed is
/// tried again: a host keeps what its user wrote.
class StoreWork
{
public:
    StoreWork(std::string path, bool fullDurability)
        : m_path(std::move(path))
        , m_fullDurability(fullDurability)
    {
    }

    static size_t StepCount();
    static const char* StepName(size_t step);

    /// @return false when it failed, which is among the failures
    bool Open();
    /// The log is carried over to the file whenever it has so many pages, after Open.
    void CheckpointEvery(int pages);
    bool Step(size_t step);
    /// Never fails.
    void Close();

    const std::vector<StepFailure>& Failures() const { return m_failures; }

private:
    struct StepOf
    {
        const char* name;
        void (StoreWork::*run)();
    };
    static const StepOf Steps[];

    template <class Body>
    bool Try(const char* name, Body&& body);
    void Must(HRESULT code);
    void Save(IMAPIProp& object);

    Ref<IMAPIFolder> Folder(FolderId folder);
    Ref<IMessage> Message(MessageId message);
    Ref<IMessage> New(const char* subject);
    ULONG TagOfName(LONG number, ULONG flags);
    template <class Interface>
    Ref<Interface> InBook(ULONG size, ENTRYID* id);
    void WriteStream(IMAPIProp& object, ULONG tag, size_t size);
    void AttachTo(IMessage& message);
    void PassMessage(MessageId message, ULONG flags);

    void SaveNew();
    void SaveChanged();
    void Move();
    void Copy();
    void CopyObject();
    void DeleteOne();
    void SaveLarge();
    void SaveAttachments();
    void MakeName();
    void SaveNamed();
    void MakeFolder();
    void RenameFolder();
    void DropFolder();
    void MarkRead();
    void ReadRows();
    void AddUser();
    void AddMember();

    const std::string m_path;
    const bool m_fullDurability;
    const char* m_step = "";
    StorePtr m_context;
    Ref<IMsgStore> m_store;
    Ref<IAddrBook> m_book;
    std::vector<StepFailure> m_failures;
};

} // namespace zebstore::test
