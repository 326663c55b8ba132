// Hears of the changes of a cached table.
#pragma once

#include "tools/zebview/Window.h"

#include <functional>

namespace zeb::view
{

/// An invisible window that a cached table posts WM_CACHED_TABLE_CHANGED to. Messages that come close to one another make
/// one call.
class ChangeListener : public Window
{
public:
    /// @param changed called on the thread of the window; @param failed what it throws, in one line
    ChangeListener(std::function<void()> changed, std::function<void(const std::string&)> failed);

private:
    LRESULT OnMessage(UINT message, WPARAM wParam, LPARAM lParam) override;
    void OnFailure(const std::string& failure) override { m_failed(failure); }

    const std::function<void()> m_changed;
    const std::function<void(const std::string&)> m_failed;
    bool m_isWaiting = false;
};

} // namespace zeb::view
