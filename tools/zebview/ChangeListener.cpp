#include "tools/zebview/ChangeListener.h"

#include "zebapi/ZebAPI.h"

#include <utility>

namespace zeb::view
{
namespace
{

constexpr UINT_PTR TimerChange = 1;
/// Long enough that a program which adds messages one by one does not keep the window busy.
constexpr UINT PauseMilliseconds = 60;

} // namespace

ChangeListener::ChangeListener(std::function<void()> changed, std::function<void(const std::string&)> failed)
    : m_changed(std::move(changed))
    , m_failed(std::move(failed))
{
    Create({L"ZebViewListener", 0, 0, 0, 0}, "", HWND_MESSAGE, nullptr);
}

LRESULT ChangeListener::OnMessage(UINT message, WPARAM wParam, LPARAM lParam)
{
    if (message == WM_CACHED_TABLE_CHANGED)
    {
        if (!m_isWaiting)
        {
            m_isWaiting = SetTimer(Handle(), TimerChange, PauseMilliseconds, nullptr) != 0;
        }
        return 0;
    }
    if (message == WM_TIMER)
    {
        KillTimer(Handle(), TimerChange);
        m_isWaiting = false;
        m_changed();
        return 0;
    }
    return DefWindowProcW(Handle(), message, wParam, lParam);
}

} // namespace zeb::view
