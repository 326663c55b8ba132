// OpenStreamOnFile: an IStream over a file.
#include "platform/text.h"
#include "zebstore/objects/Stream.h"

#include <filesystem>
#include <fstream>
#include <random>

namespace zebstore
{
namespace
{

namespace fs = std::filesystem;

class FileBytes final : public StreamBytes
{
public:
    FileBytes(fs::path path, bool writable, bool create, bool deleteAtEnd)
        : m_path(std::move(path))
        , m_deleteAtEnd(deleteAtEnd)
    {
        std::ios::openmode mode = std::ios::in | std::ios::binary;
        if (writable)
        {
            mode |= std::ios::out;
        }
        if (create)
        {
            mode |= std::ios::trunc;
        }
        m_file.open(m_path, mode);
        if (!m_file)
        {
            throw Error(create ? MAPI_E_NO_ACCESS : MAPI_E_NOT_FOUND, m_path.string() + " cannot be opened");
        }
    }

    ~FileBytes() override
    {
        m_file.close();
        std::error_code ignored;
        if (m_deleteAtEnd)
        {
            fs::remove(m_path, ignored);
        }
    }

    std::uint64_t Size() override
    {
        m_file.clear();
        m_file.seekg(0, std::ios::end);
        return static_cast<std::uint64_t>(m_file.tellg());
    }

    size_t ReadAt(std::uint64_t offset, void* buffer, size_t size) override
    {
        m_file.clear();
        m_file.seekg(static_cast<std::streamoff>(offset));
        m_file.read(static_cast<char*>(buffer), static_cast<std::streamsize>(size));
        return static_cast<size_t>(m_file.gcount());
    }

    void WriteAt(std::uint64_t offset, const void* bytes, size_t size) override
    {
        if (offset > Size())
        {
            SetSize(offset);
        }
        m_file.clear();
        m_file.seekp(static_cast<std::streamoff>(offset));
        m_file.write(static_cast<const char*>(bytes), static_cast<std::streamsize>(size));
        if (!m_file)
        {
            throw Error(STG_E_MEDIUMFULL, m_path.string() + " cannot be written");
        }
    }

    void SetSize(std::uint64_t size) override
    {
        Commit();
        std::error_code failure;
        fs::resize_file(m_path, size, failure);
        if (failure)
        {
            throw Error(STG_E_MEDIUMFULL, m_path.string() + ": " + failure.message());
        }
    }

    void Commit() override
    {
        m_file.flush();
        if (!m_file)
        {
            throw Error(STG_E_MEDIUMFULL, m_path.string() + " cannot be written");
        }
    }

private:
    const fs::path m_path;
    const bool m_deleteAtEnd;
    std::fstream m_file;
};

/// An unused file name in `folder` (empty: the system's folder for temporary files).
fs::path UniqueName(const fs::path& folder, const std::string& prefix)
{
    const fs::path base = folder.empty() ? fs::temp_directory_path() : folder;
    std::random_device random;
    for (int attempt = 0; attempt < 1000; ++attempt)
    {
        char name[16];
        std::snprintf(name, sizeof(name), "%08X.tmp", static_cast<unsigned>(random()));
        const fs::path path = base / (prefix.substr(0, 3) + name);
        if (!fs::exists(path))
        {
            return path;
        }
    }
    throw Error(MAPI_E_COLLISION, base.string() + " has no unused file name left");
}

} // namespace
} // namespace zebstore

HRESULT STDMETHODCALLTYPE OpenStreamOnFile(LPALLOCATEBUFFER, LPFREEBUFFER, ULONG flags, LPTSTR name, LPTSTR prefix,
                                           LPSTREAM* stream)
{
    using namespace zebstore;
    return Guarded("OpenStreamOnFile", [&]
    {
        Require(stream != nullptr, "the output pointer is null");
        *stream = nullptr;
        const bool unique = (flags & SOF_UNIQUEFILENAME) != 0;
        Require(unique || (name != nullptr && *name != 0), "the file name is null or empty");
        const std::string narrow(name != nullptr ? name : "");
        fs::path path(zeb::platform::WideFromNarrow(narrow.data(), narrow.size()));
        if (unique)
        {
            path = UniqueName(path, prefix != nullptr ? prefix : "SOF");
        }
        const bool writable = unique || (flags & (STGM_READWRITE | STGM_WRITE)) != 0;
        const bool create = unique || (flags & STGM_CREATE) != 0;
        auto bytes = std::make_shared<FileBytes>(path, writable, create, (flags & STGM_DELETEONRELEASE) != 0);
        *stream = new Stream(std::move(bytes), writable);
    });
}
