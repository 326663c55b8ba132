// Compound files: folders and streams inside one file, as Windows' structured storage has them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

namespace zeb::platform
{

/// A compound file that cannot be read or written; "what: why" in UTF-8.
class CompoundError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// A stream that is open for reading. It keeps its file open.
class CompoundStream
{
public:
    virtual ~CompoundStream() = default;
    virtual uint64_t Size() const = 0;
    /// Reads the next bytes, at most `size`. @return the bytes read, 0 at the end @throws CompoundError
    virtual size_t Read(char* buffer, size_t size) = 0;
};

/// A folder that is open for reading. Names are UTF-8, and are found in any case of their letters.
/// Threads: one at a time for all of a file.
class CompoundFolder
{
public:
    virtual ~CompoundFolder() = default;
    /// The names of its folders and streams.
    virtual std::vector<std::string> Names() const = 0;
    /// @return null when it has no folder of that name @throws CompoundError
    virtual std::shared_ptr<CompoundFolder> OpenFolder(const std::string& name) = 0;
    /// @return null when it has no stream of that name @throws CompoundError
    virtual std::unique_ptr<CompoundStream> OpenStream(const std::string& name) = 0;
};

/// Opens the top folder of a file. @param file path, UTF-8 @throws CompoundError
std::shared_ptr<CompoundFolder> OpenCompoundFile(const std::string& file);

/// Fills `buffer` with the next bytes, at most `size`, and returns their number; 0 at the end.
using CompoundSource = std::function<size_t(char* buffer, size_t size)>;

/// A folder that is being written. What is added is complete before the next is added.
class CompoundOutput
{
public:
    virtual ~CompoundOutput() = default;
    /// @throws CompoundError
    virtual std::unique_ptr<CompoundOutput> AddFolder(const std::string& name) = 0;
    /// Writes a whole stream, piece by piece. @throws CompoundError
    virtual void AddStream(const std::string& name, const CompoundSource& source) = 0;
    /// Completes the folder; for the top folder, the file. @throws CompoundError
    virtual void Finish() = 0;
};

/// The class of a compound file: a GUID as its bytes.
using CompoundClass = std::array<unsigned char, 16>;

/// Creates a file that does not exist. @return its top folder; without Finish the file is not complete
/// @throws CompoundError
std::unique_ptr<CompoundOutput> CreateCompoundFile(const std::string& file, const CompoundClass& kind);

} // namespace zeb::platform
