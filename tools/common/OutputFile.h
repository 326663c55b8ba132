// Atomic file write (temporary file, then rename).
#pragma once

#include <fstream>
#include <optional>
#include <string>

namespace zeb::tools
{

/// A file that replaces another one, if any, when it is complete. It is written under another name in the same folder; an
/// object destroyed before Finish deletes it.
class FileReplacement
{
public:
    /// @throws ToolError naming the file when it is a directory
    explicit FileReplacement(std::string file);
    ~FileReplacement();
    FileReplacement(const FileReplacement&) = delete;
    FileReplacement& operator=(const FileReplacement&) = delete;

    /// The file to write, UTF-8; it does not exist.
    const std::string& Partial() const { return m_partial; }
    /// REQUIRES: the file is written and closed. @throws ToolError naming the file
    void Finish();
    /// @throws ToolError that the file cannot be written, with the reason if it is known
    [[noreturn]] void Fail(const std::string& reason = {}) const;

private:
    const std::string m_file;
    std::string m_partial; ///< empty after Finish
};

/// Writes to a file, or, when its name is empty, to standard output. An object destroyed before Finish
/// leaves no file.
class OutputFile
{
public:
    /// @throws ToolError naming the file
    explicit OutputFile(const std::string& file);
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void Write(const std::string& text);
    void Finish();

private:
    std::optional<FileReplacement> m_file; ///< none: standard output
    std::ofstream m_stream;
};

} // namespace zeb::tools
