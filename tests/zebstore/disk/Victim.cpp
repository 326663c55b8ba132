// Works on a store until it is killed: store_victim STORE LOG SEED. Writes to LOG "open" when it has opened the store,
// then for each change "-LINE" and "+LINE" for what it takes away and adds, "begin" before it and "done" after it.
#include "tests/zebstore/disk/MixedLoad.h"

#include <cstdio>
#include <cstdlib>

namespace
{

void WriteLog(std::FILE* log, const std::string& text)
{
    std::fwrite(text.data(), 1, text.size(), log);
    std::fflush(log);
}

std::string TextOf(const zebstore::test::LoadChange& change)
{
    std::string text;
    for (const std::string& line : change.removed)
    {
        text += "-" + line + "\n";
    }
    for (const std::string& line : change.added)
    {
        text += "+" + line + "\n";
    }
    return text + "begin\n";
}

} // namespace

int main(int count, char** arguments)
{
    if (count != 4)
    {
        return 2;
    }
    try
    {
        std::FILE* log = std::fopen(arguments[2], "wb");
        if (log == nullptr)
        {
            return 2;
        }
        WriteLog(log, "start\n");
        const auto store = zebstore::StoreFile::Open(arguments[1], {});
        WriteLog(log, "open\n");
        zebstore::test::MixedLoad load(store, static_cast<unsigned>(std::strtoul(arguments[3], nullptr, 10)));
        for (;;)
        {
            load.Step([&](const zebstore::test::LoadChange& change) { WriteLog(log, TextOf(change)); });
            WriteLog(log, "done\n");
        }
    }
    catch (const std::exception& error)
    {
        std::fprintf(stderr, "store_victim: %s\n", error.what());
        return 1;
    }
}
