// The library loader over a LoadModule that writes down what it is asked for, and a system version of the test's own.
#include "tests/zebapi/frame/RecordingLoader.h"

#include "platform/module.h"

namespace zeb::platform
{

ModuleHandle RecordedLoadModule(const std::string& path, long mode, std::string* reason)
{
    zeb::test::Loads().push_back({path, mode});
    return LoadModule(path, mode, reason);
}

} // namespace zeb::platform

#define LoadModule RecordedLoadModule
#include "qorth/DllLoader.cpp"

#define QorIsWinVistaorHigher MachineIsWinVistaorHigher
#include "qorth/System.cpp"
#undef QorIsWinVistaorHigher

bool QorIsWinVistaorHigher()
{
    return zeb::test::isVista;
}

namespace zeb::test
{

bool isVista = true;

std::vector<Load>& Loads()
{
    static std::vector<Load> loads;
    return loads;
}

} // namespace zeb::test
