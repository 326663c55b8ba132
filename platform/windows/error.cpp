#include "platform/windows/error.h"

namespace zeb::platform
{

std::string SystemMessage(DWORD code, const std::string& subject)
{
    DWORD_PTR inserts[] = {reinterpret_cast<DWORD_PTR>(subject.c_str()), 0, 0, 0};
    char* text = nullptr;
    const DWORD length =
        FormatMessageA(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_ARGUMENT_ARRAY,
                       nullptr, code, 0, reinterpret_cast<char*>(&text), 0, reinterpret_cast<va_list*>(inserts));
    std::string message = length == 0 ? "error " + std::to_string(code) : std::string(text, length);
    LocalFree(text);
    message.erase(message.find_last_not_of("\r\n ") + 1);
    return message;
}

} // namespace zeb::platform
