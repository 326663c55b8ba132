#include "tools/common/HtmlText.h"

#include <libxml/HTMLparser.h>

#include <climits>
#include <cstring>
#include <memory>
#include <new>
#include <set>
#include <string_view>

namespace zeb::tools
{
namespace
{

bool IsOneOf(const std::set<std::string_view>& names, std::string_view name)
{
    return names.count(name) != 0;
}

bool IsHidden(std::string_view name)
{
    static const std::set<std::string_view> names = {"head", "script", "style", "title", "template"};
    return IsOneOf(names, name);
}

/// Elements that begin and end on lines of their own.
bool IsBlock(std::string_view name)
{
    static const std::set<std::string_view> names = {
        "address", "article",  "aside",  "blockquote", "body",    "center", "dd",    "div",   "dl",
        "dt",      "fieldset", "figure", "footer",     "form",    "header", "hr",    "html",  "li",
        "main",    "nav",      "ol",     "pre",        "section", "table",  "tbody", "tfoot", "thead",
        "tr",      "ul",       "h1",     "h2",         "h3",      "h4",     "h5",    "h6",    "p"};
    return IsOneOf(names, name);
}

/// Blocks with an empty line before and after them.
bool IsApart(std::string_view name)
{
    static const std::set<std::string_view> names = {"p",  "h1", "h2", "h3", "h4",  "h5",
                                                     "h6", "ul", "ol", "dl", "pre", "blockquote"};
    return IsOneOf(names, name);
}

/// Collects the text of a page from the parser's events. Events instead of the parser's tree: the tree has a maximum
/// depth, and deeper content would be lost.
class PageText
{
public:
    void Begin(std::string_view name)
    {
        if (IsHidden(name))
        {
            ++m_hidden;
        }
        if (name == "br")
        {
            NewLine();
        }
        else if (name == "td" || name == "th")
        {
            Separate();
        }
        else if (IsBlock(name))
        {
            Break(IsApart(name) ? 2 : 1);
        }
        if (name == "pre")
        {
            ++m_preformatted;
        }
        if (name == "li")
        {
            Append("* ");
        }
    }

    void End(std::string_view name)
    {
        if (IsHidden(name) && m_hidden > 0)
        {
            --m_hidden;
        }
        if (name == "pre" && m_preformatted > 0)
        {
            --m_preformatted;
        }
        if (IsBlock(name))
        {
            Break(IsApart(name) ? 2 : 1);
        }
    }

    void Characters(std::string_view text)
    {
        if (m_hidden > 0)
        {
            return;
        }
        for (size_t i = 0; i < text.size(); ++i)
        {
            if (text[i] == '\n' && m_preformatted > 0)
            {
                NewLine();
            }
            else if (IsSpace(text[i]) && m_preformatted == 0)
            {
                m_space = true;
            }
            else if (text.compare(i, 2, "\xC2\xA0") == 0)
            {
                // A non-breaking space is text.
                Append(" ");
                ++i;
            }
            else if (text[i] != '\r')
            {
                Append(text.substr(i, 1));
            }
        }
    }

    std::string Take()
    {
        while (!m_text.empty() && (m_text.back() == '\n' || m_text.back() == ' '))
        {
            m_text.pop_back();
        }
        if (!m_text.empty())
        {
            m_text += '\n';
        }
        return std::move(m_text);
    }

private:
    static bool IsSpace(char character)
    {
        return character == ' ' || character == '\t' || character == '\n' || character == '\r';
    }

    void Append(std::string_view text)
    {
        if (m_hidden > 0)
        {
            return;
        }
        m_text.append(m_lines, '\n');
        m_lines = 0;
        if (m_space && !m_text.empty() && m_text.back() != '\n')
        {
            m_text += ' ';
        }
        m_space = false;
        m_text += text;
    }

    void NewLine()
    {
        if (m_hidden > 0)
        {
            return;
        }
        m_text.append(m_lines, '\n');
        m_lines = 0;
        if (!m_text.empty())
        {
            m_text += '\n';
        }
        m_space = false;
    }

    /// The next text begins after at least this number of line ends.
    void Break(size_t lines)
    {
        m_space = false;
        if (m_text.empty() || m_hidden > 0)
        {
            return;
        }
        size_t have = 0;
        while (have < m_text.size() && m_text[m_text.size() - 1 - have] == '\n')
        {
            ++have;
        }
        if (lines > have + m_lines)
        {
            m_lines = lines - have;
        }
    }

    /// Between the cells of a row.
    void Separate()
    {
        if (m_lines == 0 && !m_text.empty() && m_text.back() != '\n')
        {
            m_space = true;
        }
    }

    std::string m_text;
    size_t m_lines = 0; ///< line ends before the next text
    bool m_space = false;
    size_t m_hidden = 0, m_preformatted = 0;
};

const char* Chars(const xmlChar* text)
{
    return reinterpret_cast<const char*>(text);
}

void OnBegin(void* page, const xmlChar* name, const xmlChar**)
{
    static_cast<PageText*>(page)->Begin(Chars(name));
}

void OnEnd(void* page, const xmlChar* name)
{
    static_cast<PageText*>(page)->End(Chars(name));
}

void OnCharacters(void* page, const xmlChar* text, int length)
{
    static_cast<PageText*>(page)->Characters({Chars(text), static_cast<size_t>(length)});
}

void OnError(void*, xmlErrorPtr) {}

} // namespace

std::string TextOfHtml(const std::string& html)
{
    PageText page;
    htmlSAXHandler handler = {};
    handler.startElement = OnBegin;
    handler.endElement = OnEnd;
    handler.characters = OnCharacters;
    handler.ignorableWhitespace = OnCharacters;
    handler.cdataBlock = OnCharacters;
    const std::unique_ptr<htmlParserCtxt, void (*)(htmlParserCtxtPtr)> parser(htmlNewParserCtxt(), htmlFreeParserCtxt);
    if (!parser)
    {
        throw std::bad_alloc();
    }
    *parser->sax = handler;
    parser->sax->serror = OnError;
    parser->userData = &page;
    const size_t size = html.size() < INT_MAX ? html.size() : INT_MAX;
    const htmlDocPtr document =
        htmlCtxtReadMemory(parser.get(), html.data(), static_cast<int>(size), nullptr, "UTF-8",
                           HTML_PARSE_RECOVER | HTML_PARSE_NOERROR | HTML_PARSE_NOWARNING | HTML_PARSE_NONET);
    if (document != nullptr)
    {
        xmlFreeDoc(document);
    }
    return page.Take();
}

} // namespace zeb::tools
