#include "tests/zebview/Remote.h"

#include "platform/text.h"

#include <stdexcept>

namespace zeb::test
{

std::string Utf8(const std::wstring& text)
{
    return platform::Utf8FromWide(text.data(), text.size());
}

std::wstring Wide(const std::string& text)
{
    return platform::WideFromUtf8(text.data(), text.size());
}

RemoteMemory::RemoteMemory(HWND window, size_t size)
{
    DWORD id = 0;
    GetWindowThreadProcessId(window, &id);
    m_process = OpenProcess(PROCESS_VM_OPERATION | PROCESS_VM_READ | PROCESS_VM_WRITE, FALSE, id);
    if (m_process == nullptr)
    {
        throw std::runtime_error("the window's process cannot be opened");
    }
    m_memory = static_cast<BYTE*>(VirtualAllocEx(m_process, nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE));
    if (m_memory == nullptr)
    {
        CloseHandle(m_process);
        throw std::runtime_error("no memory in the window's process");
    }
}

RemoteMemory::~RemoteMemory()
{
    VirtualFreeEx(m_process, m_memory, 0, MEM_RELEASE);
    CloseHandle(m_process);
}

void RemoteMemory::Write(const void* data, size_t size, size_t offset) const
{
    if (!WriteProcessMemory(m_process, At(offset), data, size, nullptr))
    {
        throw std::runtime_error("the window's process cannot be written to");
    }
}

void RemoteMemory::Read(void* data, size_t size, size_t offset) const
{
    if (!ReadProcessMemory(m_process, At(offset), data, size, nullptr))
    {
        throw std::runtime_error("the window's process cannot be read");
    }
}

std::string TextOf(HWND window)
{
    std::wstring text(static_cast<size_t>(SendMessageW(window, WM_GETTEXTLENGTH, 0, 0)) + 1, L'\0');
    text.resize(
        static_cast<size_t>(SendMessageW(window, WM_GETTEXT, text.size(), reinterpret_cast<LPARAM>(text.data()))));
    return Utf8(text);
}

} // namespace zeb::test
