// Notes about defects of a message.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

namespace zeb::tools
{

/// Repairs and guesses made while a message was read, each kind once.
class Notes
{
public:
    void Add(const std::string& text)
    {
        if (std::find(m_texts.begin(), m_texts.end(), text) == m_texts.end())
        {
            m_texts.push_back(text);
        }
    }
    const std::vector<std::string>& Texts() const { return m_texts; }

private:
    std::vector<std::string> m_texts;
};

} // namespace zeb::tools
