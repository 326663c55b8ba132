#include "tools/common/WrappedText.h"

#include "tools/common/Output.h"

#include <vector>

namespace zeb::tools
{
namespace
{

constexpr size_t TabColumns = 8;

/// A line without controls, tabs replaced by blanks.
std::string Shown(const std::string& line)
{
    std::string text;
    size_t columns = 0;
    for (size_t begin = 0;;)
    {
        const size_t tab = line.find('\t', begin);
        const std::string piece = OneLine(line.substr(begin, tab - begin));
        text += piece;
        columns += DisplayWidth(piece);
        if (tab == std::string::npos)
        {
            return text;
        }
        const size_t blanks = TabColumns - columns % TabColumns;
        text.append(blanks, ' ');
        columns += blanks;
        begin = tab + 1;
    }
}

/// The length of a line's quotation marks and indentation.
size_t PrefixOf(const std::string& line)
{
    const size_t end = line.find_first_not_of("> ");
    return end == std::string::npos ? line.size() : end;
}

/// What is not broken: a run of narrow characters, or one wide character with its combining marks.
struct Word
{
    std::string blanks; ///< before it
    std::string text;
    size_t columns = 0;
};

std::vector<Word> WordsOf(const std::string& text)
{
    std::vector<Word> words;
    bool isJoined = false; ///< whether a narrow character belongs to the last word
    std::string blanks;
    for (size_t at = 0; at < text.size();)
    {
        if (text[at] == ' ')
        {
            blanks += text[at++];
            isJoined = false;
            continue;
        }
        const size_t begin = at;
        const size_t columns = NextColumns(text, at);
        const bool isMark = columns == 0 && blanks.empty() && !words.empty();
        if (!isMark && (columns > 1 || !isJoined))
        {
            words.push_back({blanks, "", 0});
            blanks.clear();
        }
        words.back().text.append(text, begin, at - begin);
        words.back().columns += columns;
        isJoined = isMark ? isJoined : columns <= 1;
    }
    return words;
}

std::string Unbroken(std::string line)
{
    line.erase(line.find_last_not_of(' ') + 1);
    return line + "\n";
}

std::string Broken(const std::string& line, size_t width)
{
    const std::string prefix = line.substr(0, PrefixOf(line));
    std::string lines, current = prefix;
    size_t used = prefix.size();
    bool isFirst = true;
    for (const Word& word : WordsOf(line.substr(prefix.size())))
    {
        if (!isFirst && used + word.blanks.size() + word.columns > width)
        {
            lines += Unbroken(current);
            current = prefix;
            used = prefix.size();
            isFirst = true;
        }
        if (!isFirst)
        {
            current += word.blanks;
            used += word.blanks.size();
        }
        current += word.text;
        used += word.columns;
        isFirst = false;
    }
    return lines + Unbroken(current);
}

} // namespace

std::string Wrapped(const std::string& text, size_t width)
{
    std::string wrapped;
    for (size_t begin = 0; begin < text.size();)
    {
        size_t end = text.find('\n', begin);
        end = end == std::string::npos ? text.size() : end;
        const std::string line = Shown(text.substr(begin, end - begin));
        const bool isNarrow = width == 0 || DisplayWidth(line) <= width || PrefixOf(line) > width / 2;
        wrapped += isNarrow ? Unbroken(line) : Broken(line, width);
        begin = end + 1;
    }
    return wrapped;
}

} // namespace zeb::tools
