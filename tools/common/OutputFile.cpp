#include "tools/common/OutputFile.h"

#include "tools/common/Failure.h"
#include "tools/common/Output.h"

#include <filesystem>
#include <random>

namespace zeb::tools
{

FileReplacement::FileReplacement(std::string file)
    : m_file(std::move(file))
{
    std::error_code ignored;
    if (std::filesystem::is_directory(std::filesystem::u8path(m_file), ignored))
    {
        throw ToolError("'" + ValidUtf8(m_file) + "' is a directory");
    }
    m_partial = m_file + "." + std::to_string(std::random_device{}()) + ".part";
}

FileReplacement::~FileReplacement()
{
    if (!m_partial.empty())
    {
        std::error_code ignored;
        std::filesystem::remove(std::filesystem::u8path(m_partial), ignored);
    }
}

void FileReplacement::Fail(const std::string& reason) const
{
    throw ToolError("'" + ValidUtf8(m_file) + "' cannot be written" + (reason.empty() ? "" : ": " + reason));
}

void FileReplacement::Finish()
{
    std::error_code failure;
    std::filesystem::rename(std::filesystem::u8path(m_partial), std::filesystem::u8path(m_file), failure);
    if (failure)
    {
        Fail();
    }
    m_partial.clear();
}

OutputFile::OutputFile(const std::string& file)
{
    if (file.empty())
    {
        return;
    }
    m_file.emplace(file);
    m_stream.open(std::filesystem::u8path(m_file->Partial()), std::ios::binary | std::ios::trunc);
    if (!m_stream)
    {
        m_file->Fail();
    }
}

void OutputFile::Write(const std::string& text)
{
    if (!m_file)
    {
        Print(text);
    }
    else if (!m_stream.write(text.data(), static_cast<std::streamsize>(text.size())))
    {
        m_file->Fail();
    }
}

void OutputFile::Finish()
{
    if (!m_file)
    {
        return FlushOutput();
    }
    m_stream.close();
    if (!m_stream)
    {
        m_file->Fail();
    }
    m_file->Finish();
}

} // namespace zeb::tools
