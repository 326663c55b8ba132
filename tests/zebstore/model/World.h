// A store opened by two sessions, and the model of it.
#pragma once

#include "tests/zebstore/model/View.h"

namespace zebstore::model
{

/// One step of a sequence: what it does exactly depends on the seed and on what is there.
struct Operation
{
    size_t kind = 0; ///< of Steps()
    unsigned seed = 0;
};

class World;
struct Step
{
    const char* name;
    int weight;
    void (*run)(World& world, Random& random);
};
const std::vector<Step>& Steps();
std::vector<Operation> RandomSequence(unsigned seed, size_t length);

/// A message that a session has open while others change it.
struct HeldMail
{
    MailPtr mail;
    Properties own; ///< as it was opened
    unsigned version = 0;
    std::string key;
    Ref<IMessage> message;
};

class World : public Provider
{
public:
    static constexpr int Sessions = 2;

    explicit World(const Words& words);
    ~World() override;

    /// @throws Difference
    void Run(const Operation& operation);
    /// Everything, at the end. @throws Difference
    void CompareAll();
    /// What was done, for people.
    const std::vector<std::string>& Log() const { return m_log; }

    // For the steps.
    void Say(const std::string& text);
    int Session() const { return m_session; }
    int& LastNumber() { return m_lastNumber; }
    const FolderPtr& Root() const { return m_root; }
    /// All, each before its subfolders.
    std::vector<FolderPtr> Folders() const;
    std::vector<MailPtr> AllMails() const;
    FolderPtr Holder(const Mail& mail) const;
    std::vector<std::unique_ptr<View>>& Views() { return m_views; }
    std::vector<HeldMail>& Held() { return m_held; }

    Ref<IMAPIFolder> Open(const Folder& folder) { return OpenAs<IMAPIFolder>(folder.id, IID_IMAPIFolder); }
    Ref<IMessage> Open(const Mail& mail) { return OpenAs<IMessage>(mail.id, IID_IMessage); }
    void OpenView(const TableKind& kind, std::vector<ULONG> columns);

    /// Reads the identifiers of what is new, and compares the others.
    void LearnMails(Folder& folder);
    void LearnFolders(Folder& folder);
    /// The notifications of this step need not list each row.
    void MayLoseEvents() { m_mayLose = true; }

private:
    void TestBody() override {}
    template <class Interface>
    Ref<Interface> OpenAs(const Bytes& id, const IID& iid)
    {
        ULONG type = 0;
        IUnknown* object = nullptr;
        const HRESULT result =
            m_stores[m_session]->OpenEntry(static_cast<ULONG>(id.size()), Id(id), &iid, MAPI_MODIFY, &type, &object);
        Check(result, S_OK, "OpenEntry");
        return Ref<Interface>::Adopt(static_cast<Interface*>(object));
    }
    void OpenSessions();
    void StartFence();
    void Fence();
    void DropViewsOfGoneFolders();

    std::vector<std::string> m_log;
    const Words& m_words;
    Ref<IMAPISession> m_sessions[Sessions];
    Ref<IMsgStore> m_stores[Sessions];
    int m_session = 0;
    int m_lastNumber = 0;
    bool m_mayLose = false;
    FolderPtr m_root;
    std::vector<std::unique_ptr<View>> m_views;
    std::vector<HeldMail> m_held;
    Ref<IMAPIFolder> m_fenceFolder;
    Bytes m_fenceMail;
    std::unique_ptr<test::Followed> m_fence;
    size_t m_fences = 0;
};

} // namespace zebstore::model
