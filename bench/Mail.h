// Mail that is made by seed: the same number gives the same message.
#pragma once

#include "bench/Vocabulary.h"

namespace bench
{

/// Writes messages as they travel: headers, and a plain text in one of the usual encodings, one in four with HTML next to it.
class MailWriter
{
public:
    /// The next message, with lines that end in LF.
    std::string Next();
    const Vocabulary& Words() const { return m_words; }

private:
    std::string Headers();
    std::string Text();

    Vocabulary m_words;
    unsigned m_number = 0;
};

} // namespace bench
