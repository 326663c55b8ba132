#include "tools/zeb-import/PstSource.h"

#include "tools/common/Failure.h"
#include "tools/common/Output.h"
#include "tools/zeb-import/PstMessage.h"

#include <cstring>
#include <filesystem>
#include <fstream>
#include <type_traits>

namespace zeb::tools
{
namespace
{

namespace fs = std::filesystem;

/// Opens the file by its path in the system's own characters: libpff's narrow names are not UTF-8 everywhere.
template <class Character>
int OpenFile(libpff_file_t* file, const Character* name, libpff_error_t** error)
{
    if constexpr (std::is_same_v<Character, wchar_t>)
    {
        return libpff_file_open_wide(file, name, LIBPFF_OPEN_READ, error);
    }
    else
    {
        return libpff_file_open(file, name, LIBPFF_OPEN_READ, error);
    }
}

/// The last four bytes of a folder's entry identifier in a PST file are its node.
constexpr size_t EntryIdSize = 24, NodeInEntryId = 20;

/// The size in the file's header; 0 without a valid header.
uint64_t SizeInHeader(const fs::path& file)
{
    unsigned char header[0xC0] = {};
    std::ifstream stream(file, std::ios::binary);
    if (!stream.read(reinterpret_cast<char*>(header), sizeof header) || std::memcmp(header, "!BDN", 4) != 0)
    {
        return 0;
    }
    // The offset of the field differs between the 32-bit and the 64-bit format.
    const unsigned version = header[10] | header[11] << 8;
    const size_t field = version >= 23 ? 0xB8 : 0xA8;
    uint64_t size = 0;
    for (size_t i = version >= 23 ? 8 : 4; i-- > 0;)
    {
        size = size << 8 | header[field + i];
    }
    return size;
}

std::string NameOf(libpff_item_t* folder)
{
    size_t size = 0;
    libpff_error_t* error = nullptr;
    const int known = libpff_folder_get_utf8_name_size(folder, &size, &error);
    pff::Check(known, error, "a folder's name cannot be read");
    if (known == 0 || size == 0)
    {
        return {};
    }
    std::string name(size, '\0');
    pff::Check(libpff_folder_get_utf8_name(folder, reinterpret_cast<uint8_t*>(name.data()), size, &error), error,
               "a folder's name cannot be read");
    return name.substr(0, name.find('\0'));
}

uint32_t IdentifierOf(libpff_item_t* item)
{
    uint32_t identifier = 0;
    libpff_item_get_identifier(item, &identifier, nullptr);
    return identifier;
}

int SubFolders(libpff_item_t* folder)
{
    return pff::Number("the subfolders cannot be read", [&](int* number, libpff_error_t** error)
    { return libpff_folder_get_number_of_sub_folders(folder, number, error); });
}

pff::Item SubFolder(libpff_item_t* folder, int index)
{
    return pff::Take("a folder cannot be read", [&](libpff_item_t** item, libpff_error_t** error)
    { return libpff_folder_get_sub_folder(folder, index, item, error); });
}

/// The subfolder of that name; empty when it does not exist.
pff::Item ChildNamed(libpff_item_t* folder, const std::string& name)
{
    for (int i = 0, count = SubFolders(folder); i < count; ++i)
    {
        pff::Item child = SubFolder(folder, i);
        if (NameOf(child.get()) == name)
        {
            return child;
        }
    }
    return {};
}

/// A search folder lists messages of other folders.
bool IsSearch(libpff_item_t* folder)
{
    constexpr uint32_t NodeTypeMask = 0x1F, NodeTypeSearchFolder = 0x03;
    return (IdentifierOf(folder) & NodeTypeMask) == NodeTypeSearchFolder;
}

/// The messages in the folder itself.
int Messages(libpff_item_t* folder, bool associated)
{
    if (IsSearch(folder))
    {
        return 0;
    }
    return pff::Number("the messages cannot be counted", [&](int* number, libpff_error_t** error)
    {
        return associated ? libpff_folder_get_number_of_sub_associated_contents(folder, number, error)
                          : libpff_folder_get_number_of_sub_messages(folder, number, error);
    });
}

} // namespace

PstSource::PstSource(const std::string& file)
    : m_name(ValidUtf8(file))
{
    const fs::path path = fs::u8path(file);
    std::error_code failure;
    const auto size = fs::file_size(path, failure);
    if (failure)
    {
        throw ToolError("'" + m_name + "' cannot be read: " + failure.message());
    }
    const uint64_t stated = SizeInHeader(path);
    if (stated == 0)
    {
        throw ToolError("'" + m_name + "' is not a PST or OST file");
    }
    if (stated > size)
    {
        throw ToolError("'" + m_name + "' is truncated: it should have " + Grouped(stated) + " bytes and has " +
                        Grouped(size));
    }
    libpff_error_t* error = nullptr;
    pff::Check(libpff_file_initialize(&m_file, &error), error, "libpff cannot be started");
    try
    {
        // libpff for Windows wants a path with its drive.
        pff::Check(OpenFile(m_file, fs::absolute(path).make_preferred().c_str(), &error), error,
                   "'" + m_name + "' cannot be opened as a PST or OST file");
        Open();
    }
    catch (...)
    {
        m_root.reset();
        libpff_file_free(&m_file, nullptr);
        throw;
    }
}

PstSource::~PstSource()
{
    m_root.reset();
    libpff_file_close(m_file, nullptr);
    libpff_file_free(&m_file, nullptr);
}

void PstSource::Open()
{
    m_root = pff::Take("'" + m_name + "' has no root folder", [&](libpff_item_t** item, libpff_error_t** error)
    { return libpff_file_get_root_folder(m_file, item, error); });
    if (!m_root)
    {
        throw ToolError("'" + m_name + "' has no root folder");
    }
    m_top = IdentifierOfTop();
    FolderPath root;
    root.fromRoot = true;
    Walk(m_root.get(), root);
}

uint32_t PstSource::IdentifierOfTop() const
{
    const pff::Item store =
        pff::Take("'" + m_name + "' has no message store", [&](libpff_item_t** item, libpff_error_t** error)
    { return libpff_file_get_message_store(m_file, item, error); });
    if (store)
    {
        for (const Property& property : pff::ReadRecordSet(store.get(), 0))
        {
            if (property.tag == PR_IPM_SUBTREE_ENTRYID && property.values.front().size() == EntryIdSize)
            {
                uint32_t node = 0;
                std::memcpy(&node, property.values.front().data() + NodeInEntryId, sizeof node);
                return node;
            }
        }
    }
    // In an OST file this is the server's identifier; its own tree has fixed names.
    const pff::Item mailbox = ChildNamed(m_root.get(), "Root - Mailbox");
    const pff::Item top = mailbox ? ChildNamed(mailbox.get(), "IPM_SUBTREE") : pff::Item();
    return top ? IdentifierOf(top.get()) : 0;
}

FolderPath PstSource::PathOf(libpff_item_t* folder, const FolderPath& above, int index) const
{
    if (m_top != 0 && IdentifierOf(folder) == m_top)
    {
        return {};
    }
    const std::string name = NameOf(folder);
    return above.Below(name.empty() ? "folder " + std::to_string(index + 1) : name);
}

void PstSource::Walk(libpff_item_t* folder, const FolderPath& path)
{
    // A folder that cannot be read is reported by the import itself.
    try
    {
        m_count += static_cast<uint64_t>(Messages(folder, false) + Messages(folder, true));
        for (int i = 0, count = SubFolders(folder); i < count; ++i)
        {
            const pff::Item sub = SubFolder(folder, i);
            const FolderPath below = PathOf(sub.get(), path, i);
            m_folders.push_back(below);
            Walk(sub.get(), below);
        }
    }
    catch (const ToolError&)
    {
        return;
    }
}

std::vector<FolderPath> PstSource::Folders()
{
    return m_folders;
}

void PstSource::Run(Importer& importer)
{
    FolderPath root;
    root.fromRoot = true;
    ImportFolder(importer, m_root.get(), root);
}

void PstSource::ImportMessages(Importer& importer, libpff_item_t* folder, const FolderPath& path, bool associated)
{
    for (int i = 0, count = Messages(folder, associated); i < count; ++i)
    {
        const std::string item =
            path.Text() + ", " + (associated ? "associated " : "") + "message " + std::to_string(i + 1);
        importer.AddMessage(path, associated, item, [&](Notes&)
        {
            pff::Item raw = pff::Take("it cannot be read", [&](libpff_item_t** out, libpff_error_t** error)
            {
                return associated ? libpff_folder_get_sub_associated_content(folder, i, out, error)
                                  : libpff_folder_get_sub_message(folder, i, out, error);
            });
            return ReadPstMessage(std::shared_ptr<libpff_item_t>(std::move(raw)));
        });
    }
}

void PstSource::ImportFolder(Importer& importer, libpff_item_t* folder, const FolderPath& path)
{
    try
    {
        // The root of the file only gives the position; it is not a folder of the store.
        const bool isRoot = path.fromRoot && path.names.empty();
        importer.AddFolder(path, isRoot ? Properties() : pff::ReadRecordSet(folder, 0));
        ImportMessages(importer, folder, path, false);
        ImportMessages(importer, folder, path, true);
        for (int i = 0, count = SubFolders(folder); i < count; ++i)
        {
            const pff::Item sub = SubFolder(folder, i);
            ImportFolder(importer, sub.get(), PathOf(sub.get(), path, i));
        }
    }
    catch (const ToolError& error)
    {
        importer.Skip(path.Text(), error.what());
    }
}

} // namespace zeb::tools
