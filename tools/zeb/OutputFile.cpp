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
    m_beside = m_file + "." + std::to_string(std::random_device{}()) + ".part";
    m_stream.open(std::filesystem::u8path(m_beside), std::ios::binary | std::ios::trunc);
    if (!m_stream)
    {
        m_beside.clear();
        Fail();
    }
}

OutputFile::~OutputFile()
{
    if (m_beside.empty())
    {
        return;
    }
    m_stream.close();
    std::error_code ignored;
    std::filesystem::remove(std::filesystem::u8path(m_beside), ignored);
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
        std::filesystem::rename(std::filesystem::u8path(m_beside), std::filesystem::u8path(m_file), failure);
    }
    if (!m_stream || failure)
    {
        Fail();
    }
    m_beside.clear();
}

} // namespace zeb::tools
