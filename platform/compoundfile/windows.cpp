// Compound files with Windows' structured storage.
#include "platform/compoundfile.h"

#include "platform/compoundfile/Structure.h"
#include "platform/text.h"
#include "platform/windows/error.h"

#include <algorithm>
#include <cstring>

namespace zeb::platform
{
namespace
{

constexpr size_t Piece = 64 * 1024;
constexpr DWORD Reading = STGM_READ | STGM_SHARE_EXCLUSIVE;
constexpr DWORD Writing = STGM_CREATE | STGM_READWRITE | STGM_SHARE_EXCLUSIVE;

struct Release
{
    void operator()(IUnknown* object) const { object->Release(); }
};
template <class T>
using Ref = std::unique_ptr<T, Release>;

void Check(HRESULT result, const std::string& what)
{
    if (FAILED(result))
    {
        throw CompoundError(what + ": " + SystemMessage(static_cast<DWORD>(result)));
    }
}

WideString Wide(const std::string& text)
{
    return WideFromUtf8(text.data(), text.size());
}

bool IsAbsent(HRESULT result)
{
    return result == STG_E_FILENOTFOUND;
}

class Stream final : public CompoundStream
{
public:
    /// @param storages the folders above it, which must stay open
    Stream(Ref<IStream> stream, std::shared_ptr<void> above, std::string name)
        : m_above(std::move(above))
        , m_stream(std::move(stream))
        , m_name(std::move(name))
    {
        STATSTG state{};
        Check(m_stream->Stat(&state, STATFLAG_NONAME), "the stream '" + m_name + "' cannot be read");
        m_size = state.cbSize.QuadPart;
    }

    uint64_t Size() const override { return m_size; }

    size_t Read(char* buffer, size_t size) override
    {
        ULONG read = 0;
        Check(m_stream->Read(buffer, static_cast<ULONG>(std::min(size, Piece)), &read),
              "the stream '" + m_name + "' cannot be read");
        return read;
    }

private:
    const std::shared_ptr<void> m_above;
    const Ref<IStream> m_stream;
    const std::string m_name;
    uint64_t m_size = 0;
};

/// A storage with the storages above it.
struct Storage
{
    std::shared_ptr<Storage> above;
    Ref<IStorage> storage;
};

class Folder final : public CompoundFolder
{
public:
    explicit Folder(std::shared_ptr<Storage> storage)
        : m_storage(std::move(storage))
    {
    }

    std::vector<std::string> Names() const override
    {
        IEnumSTATSTG* raw = nullptr;
        Check(m_storage->storage->EnumElements(0, nullptr, 0, &raw), "its directory cannot be read");
        const Ref<IEnumSTATSTG> list(raw);
        std::vector<std::string> names;
        STATSTG entry{};
        HRESULT result = S_OK;
        while ((result = list->Next(1, &entry, nullptr)) == S_OK)
        {
            names.push_back(Utf8FromWide(entry.pwcsName, WideLength(entry.pwcsName)));
            CoTaskMemFree(entry.pwcsName);
        }
        Check(result, "its directory cannot be read");
        return names;
    }

    std::shared_ptr<CompoundFolder> OpenFolder(const std::string& name) override
    {
        IStorage* raw = nullptr;
        const HRESULT result = m_storage->storage->OpenStorage(Wide(name).c_str(), nullptr, Reading, nullptr, 0, &raw);
        if (IsAbsent(result))
        {
            return nullptr;
        }
        Check(result, "the folder '" + name + "' cannot be opened");
        return std::make_shared<Folder>(std::make_shared<Storage>(Storage{m_storage, Ref<IStorage>(raw)}));
    }

    std::unique_ptr<CompoundStream> OpenStream(const std::string& name) override
    {
        IStream* raw = nullptr;
        const HRESULT result = m_storage->storage->OpenStream(Wide(name).c_str(), nullptr, Reading, 0, &raw);
        if (IsAbsent(result))
        {
            return nullptr;
        }
        Check(result, "the stream '" + name + "' cannot be opened");
        return std::make_unique<Stream>(Ref<IStream>(raw), m_storage, name);
    }

private:
    const std::shared_ptr<Storage> m_storage;
};

class Output final : public CompoundOutput
{
public:
    explicit Output(Ref<IStorage> storage)
        : m_storage(std::move(storage))
    {
    }

    std::unique_ptr<CompoundOutput> AddFolder(const std::string& name) override
    {
        IStorage* raw = nullptr;
        Check(m_storage->CreateStorage(Wide(name).c_str(), Writing, 0, 0, &raw), "writing failed");
        return std::make_unique<Output>(Ref<IStorage>(raw));
    }

    void AddStream(const std::string& name, const CompoundSource& source) override
    {
        IStream* raw = nullptr;
        Check(m_storage->CreateStream(Wide(name).c_str(), Writing, 0, 0, &raw), "writing failed");
        const Ref<IStream> stream(raw);
        std::vector<char> piece(Piece);
        while (const size_t size = source(piece.data(), piece.size()))
        {
            Write(*stream, piece.data(), size);
        }
    }

    void Finish() override
    {
        Check(m_storage->Commit(STGC_DEFAULT), "writing failed");
        m_storage.reset();
    }

private:
    static void Write(IStream& stream, const char* bytes, size_t size)
    {
        while (size > 0)
        {
            ULONG written = 0;
            Check(stream.Write(bytes, static_cast<ULONG>(size), &written), "writing failed");
            Check(written == 0 ? STG_E_MEDIUMFULL : S_OK, "writing failed");
            bytes += written;
            size -= written;
        }
    }

    Ref<IStorage> m_storage;
};

} // namespace

std::shared_ptr<CompoundFolder> OpenCompoundFile(const std::string& file)
{
    CheckCompoundStructure(file);
    IStorage* raw = nullptr;
    Check(StgOpenStorage(Wide(file).c_str(), nullptr, STGM_READ | STGM_SHARE_DENY_WRITE, nullptr, 0, &raw),
          "it is no undamaged compound file");
    return std::make_shared<Folder>(std::make_shared<Storage>(Storage{nullptr, Ref<IStorage>(raw)}));
}

std::unique_ptr<CompoundOutput> CreateCompoundFile(const std::string& file, const CompoundClass& kind)
{
    IStorage* raw = nullptr;
    Check(StgCreateDocfile(Wide(file).c_str(), Writing, 0, &raw), "it cannot be created");
    Ref<IStorage> storage(raw);
    CLSID id{};
    std::memcpy(&id, kind.data(), sizeof id);
    Check(storage->SetClass(id), "it cannot be written");
    return std::make_unique<Output>(std::move(storage));
}

} // namespace zeb::platform
