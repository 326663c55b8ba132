// Atomic file write (temporary file, then rename).
#pragma once

#include <fstream>
#include <string>

namespace zeb::tools
{

/// Writes to a file, or, when its name is empty, to standard output. The data goes to a temporary file in the same
/// folder, which Finish renames; an object destroyed before Finish deletes it.
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
    std::string m_partial;
    std::ofstream m_stream;
};

} // namespace zeb::tools
