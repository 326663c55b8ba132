// Controls of another process.
#pragma once

#include "platform/mapi.h"

#include <string>
#include <vector>

namespace zeb::test
{

std::string Utf8(const std::wstring& text);
std::wstring Wide(const std::string& text);

/// Memory in the process of a window, which messages of common controls point to.
class RemoteMemory
{
public:
    RemoteMemory(HWND window, size_t size);
    ~RemoteMemory();
    RemoteMemory(const RemoteMemory&) = delete;
    RemoteMemory& operator=(const RemoteMemory&) = delete;

    BYTE* At(size_t offset) const { return m_memory + offset; }
    void Write(const void* data, size_t size, size_t offset = 0) const;
    void Read(void* data, size_t size, size_t offset = 0) const;

private:
    HANDLE m_process;
    BYTE* m_memory;
};

/// Sends a message with a structure that holds the address of a text, both in the other process; the structure is read back.
/// @param textAt the member that gets the address @return the text that the control put there
template <class Structure>
std::wstring SendWithText(HWND window, UINT message, WPARAM wParam, Structure& structure, LPWSTR Structure::* textAt)
{
    constexpr size_t Characters = 4096;
    const RemoteMemory memory(window, sizeof structure + Characters * sizeof(WCHAR));
    structure.*textAt = reinterpret_cast<LPWSTR>(memory.At(sizeof structure));
    structure.cchTextMax = Characters;
    memory.Write(&structure, sizeof structure);
    SendMessageW(window, message, wParam, reinterpret_cast<LPARAM>(memory.At(0)));
    std::vector<WCHAR> text(Characters);
    memory.Read(text.data(), Characters * sizeof(WCHAR), sizeof structure);
    memory.Read(&structure, sizeof structure);
    text.back() = 0;
    return text.data();
}

/// The same for a structure without a text. @return the message's result
template <class Structure>
LRESULT SendStructure(HWND window, UINT message, WPARAM wParam, Structure& structure)
{
    const RemoteMemory memory(window, sizeof structure);
    memory.Write(&structure, sizeof structure);
    const LRESULT result = SendMessageW(window, message, wParam, reinterpret_cast<LPARAM>(memory.At(0)));
    memory.Read(&structure, sizeof structure);
    return result;
}

std::string TextOf(HWND window);

} // namespace zeb::test
