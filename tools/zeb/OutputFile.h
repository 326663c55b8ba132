// A file that is there whole or not at all.
#pragma once

#include <fstream>
#include <string>

namespace zeb::tools
{

/// Writes to a file, or, when its name is empty, to standard output. The file is written beside its place
/// under a name of its own and moved there by Finish; an object that goes before leaves nothing behind.
class OutputFile
{
public:
    /// @throws ToolError naming the file
    explicit OutputFile(std::string file);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void Write(const std::string& text);
    void Finish();

private:
    [[noreturn]] void Fail() const;

    const std::string m_file;
    std::string m_beside;
    std::ofstream m_stream;
};

} // namespace zeb::tools
