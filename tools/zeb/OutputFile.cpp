#include "tools/zeb/OutputFile.h"

#include "tools/common/Failure.h"
#include "tools/common/Output.h"

#include <filesystem>
#include <random>

namespace zeb::tools
{

OutputFile::OutputFile(std::string file)
    : m_file(std::move(file))
{
    if (m_file.empty())
    {
        return;
    }
    std::error_code ignored;
    if (std::filesystem::is_directory(std::filesystem::u8path(m_file), ignored))
    {
        throw ToolError("'" + ValidUtf8(m_file) + "' is a directory");
    }
    m_partial = m_file + "." + std::to_string(std::random_device{}()) + ".part";
    m_stream.open(std::filesystem::u8path(m_partial), std::ios::binary | std::ios::trunc);
    if (!m_stream)
    {
        m_partial.clear();
        Fail();
    }
}

OutputFile::~OutputFile()
{
    if (m_partial.empty())
    {
        return;
    }
    m_stream.close();
    std::error_code ignored;
    std::filesystem::remove(std::filesystem::u8path(m_partial), ignored);
}

void OutputFile::Fail() const
{
    throw ToolError("'" + ValidUtf8(m_file) + "' cannot be written");
}

void OutputFile::Write(const std::string& text)
{
    if (m_file.empty())
    {
        Print(text);
    }
    else if (!m_stream.write(text.data(), static_cast<std::streamsize>(text.size())))
    {
        Fail();
    }
}

void OutputFile::Finish()
{
    if (m_file.empty())
    {
        return FlushOutput();
    }
    m_stream.close();
    std::error_code failure;
    if (m_stream)
    {
        std::filesystem::rename(std::filesystem::u8path(m_partial), std::filesystem::u8path(m_file), failure);
    }
    if (!m_stream || failure)
    {
        Fail();
    }
    m_partial.clear();
}

} // namespace zeb::tools
