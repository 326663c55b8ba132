// Copies of the test provider with other export names.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace zeb::test
{

/// The image of a library (ELF or PE, 64 bits) whose export names can be changed in place.
class ProviderFile
{
public:
    /// The test provider as built, from the folder of the test program: every undecorated name, and every decorated one
    /// with '_' for '@', so that none of those resolves. @throws std::runtime_error
    static ProviderFile Template();

    /// Undecorated names only, as 64-bit Office exports them.
    static ProviderFile Undecorated();
    /// Decorated names only, as 32-bit Office exports them.
    static ProviderFile Decorated();
    /// Both spellings.
    static ProviderFile Both();

    /// Gives an export another name of the same length. @throws std::runtime_error when there is no such export
    ProviderFile& Rename(const std::string& from, const std::string& to);
    /// Removes an export: its last character is changed to '~'.
    ProviderFile& Remove(const std::string& name);

    /// Writes the library. @throws std::runtime_error
    void Save(const std::string& path) const;

private:
    explicit ProviderFile(std::vector<unsigned char> image);

    std::vector<unsigned char> m_image;
};

} // namespace zeb::test
