// Registry text: everything that can be read is written so that it reads the same.
#include "fuzz/Require.h"
#include "platform/posix/regfile.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, size_t size)
{
    using namespace zeb::platform;
    try
    {
        const regfile::Key tree = regfile::Parse({reinterpret_cast<const char*>(data), size});
        const std::string once = regfile::Write(tree);
        const std::string twice = regfile::Write(regfile::Parse(once));
        Require(once == twice, "what was written reads back as it was");
    }
    catch (const regfile::SyntaxError& error)
    {
        Require(error.Line() >= 1, "an error names its line, counted from 1");
        Require(error.what()[0] != '\0', "an error says what is wrong");
    }
    return 0;
}
