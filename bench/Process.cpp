#include "bench/Process.h"

#include "platform/module.h"

#include <filesystem>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>

extern char** environ;

namespace bench
{

void RunTool(const std::vector<std::string>& arguments)
{
    const std::string own = zeb::platform::OwnFolder() + arguments.front();
    const std::string tool = std::filesystem::exists(own) ? own : arguments.front();
    std::vector<char*> pointers;
    for (const std::string& argument : arguments)
    {
        pointers.push_back(const_cast<char*>(argument.c_str()));
    }
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    for (const int output : {1, 2})
    {
        posix_spawn_file_actions_addopen(&actions, output, "/dev/null", 1 /* write only */, 0);
    }
    pid_t process = 0;
    int status = posix_spawnp(&process, tool.c_str(), &actions, nullptr, pointers.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (status != 0 || waitpid(process, &status, 0) != process || status != 0)
    {
        throw std::runtime_error("'" + tool + "' with '" + (arguments.size() > 1 ? arguments[1] : "") + "' failed.");
    }
}

} // namespace bench
