#include "tools/zebview/CallLog.h"

#include "platform/environment.h"
#include "tools/common/Output.h"
#include "tools/zebview/Handles.h"
#include "tools/zebview/WideText.h"

#include <cstdlib>

namespace zeb::view
{
namespace
{

constexpr size_t MostLines = 20'000;
constexpr const char* TraceVariable = "ZEBSTORE_TRACE";

std::wstring TemporaryFile()
{
    WCHAR folder[MAX_PATH + 1] = L"";
    GetTempPathW(MAX_PATH + 1, folder);
    return folder + Wide("zebview-" + std::to_string(GetCurrentProcessId()) + ".trace");
}

LONGLONG SizeOf(HANDLE file)
{
    LARGE_INTEGER size{};
    return GetFileSizeEx(file, &size) ? size.QuadPart : 0;
}

File OpenForReading(const std::wstring& name)
{
    return File(CreateFileW(name.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                            OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
}

std::string ResultText(const std::string& hex)
{
    const auto code = static_cast<ULONG>(std::strtoul(hex.c_str(), nullptr, 16));
    if (code == 0)
    {
        return "S_OK";
    }
    const char* name = Zeb_NameFromValue("MAPIErrors", code, nullptr);
    return name != nullptr ? name + std::string(" ") + hex : hex;
}

} // namespace

LogLine ParseTraceLine(const std::string& line)
{
    LogLine parsed;
    const size_t number = line.find_first_not_of("0123456789");
    const size_t result = line.find(" 0x");
    if (number == 0 || number == std::string::npos || line[number] != ' ' || result == std::string::npos ||
        result < number)
    {
        parsed.call = "provider";
        parsed.text = tools::OneLine(tools::ValidUtf8(line));
        return parsed;
    }
    const size_t end = std::min(line.find(' ', result + 1), line.size());
    const std::string code = line.substr(result + 1, end - result - 1);
    parsed.number = line.substr(0, number);
    parsed.call = result > number ? line.substr(number + 1, result - number - 1) : "";
    parsed.result = ResultText(code);
    parsed.text = end < line.size() ? tools::OneLine(tools::ValidUtf8(line.substr(end + 1))) : "";
    parsed.isFailure = std::strtoul(code.c_str(), nullptr, 16) >= 0x80000000UL;
    return parsed;
}

CallLog::CallLog()
{
    const std::string given = platform::EnvironmentVariable(TraceVariable).value_or("");
    m_isTemporary = given.empty();
    m_file = m_isTemporary ? TemporaryFile() : Wide(given);
    if (m_isTemporary)
    {
        DeleteFileW(m_file.c_str());
        SetEnvironmentVariableW(Wide(TraceVariable).c_str(), m_file.c_str());
    }
    else if (const File file = OpenForReading(m_file))
    {
        m_position = SizeOf(file.Get());
    }
    Zeb_SetLogSink(&CallLog::Take, this);
}

CallLog::~CallLog()
{
    Zeb_SetLogSink(nullptr, nullptr);
    if (m_isTemporary)
    {
        DeleteFileW(m_file.c_str());
    }
}

void CallLog::Take(void* context, int level, const char* component, const char* text)
{
    auto* self = static_cast<CallLog*>(context);
    try
    {
        LogLine line;
        line.call = component;
        line.text = tools::OneLine(tools::Utf8FromNarrow(text));
        line.isFailure = level == 1;
        const std::lock_guard<std::mutex> hold(self->m_lock);
        self->m_fromSink.push_back(line);
    }
    catch (...)
    {
        // Out of memory: the line is lost.
    }
}

void CallLog::Add(LogLine line)
{
    m_lines.push_back(std::move(line));
    if (m_lines.size() > MostLines)
    {
        m_lines.pop_front();
    }
}

std::string CallLog::ReadTrace()
{
    const File file = OpenForReading(m_file);
    if (!file)
    {
        return "";
    }
    LARGE_INTEGER position;
    position.QuadPart = m_position;
    const LONGLONG added = SizeOf(file.Get()) - m_position;
    if (added <= 0 || !SetFilePointerEx(file.Get(), position, nullptr, FILE_BEGIN))
    {
        return "";
    }
    std::string text(static_cast<size_t>(added), '\0');
    DWORD read = 0;
    ReadFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &read, nullptr);
    text.resize(read);
    m_position += read;
    return text;
}

bool CallLog::Update()
{
    std::vector<LogLine> fromSink;
    {
        const std::lock_guard<std::mutex> hold(m_lock);
        fromSink.swap(m_fromSink);
    }
    m_partial += ReadTrace();
    size_t at = 0;
    for (size_t end = m_partial.find('\n'); end != std::string::npos; end = m_partial.find('\n', at))
    {
        const size_t length = end > at && m_partial[end - 1] == '\r' ? end - at - 1 : end - at;
        Add(ParseTraceLine(m_partial.substr(at, length)));
        at = end + 1;
    }
    m_partial.erase(0, at);
    for (LogLine& line : fromSink)
    {
        Add(std::move(line));
    }
    return at > 0 || !fromSink.empty();
}

} // namespace zeb::view
