#include "tools/common/Failure.h"

#include "tools/common/Color.h"
#include "tools/common/FolderPath.h"
#include "tools/common/Output.h"

#include <cstdio>

namespace zeb::tools
{
namespace
{

/// Windows codes that reach a host and are not MAPI codes.
struct OtherCode
{
    HRESULT code;
    const char* text;
};

constexpr OtherCode OtherCodes[] = {
    {NameNotFound, "the element does not exist"},
    {E_NOTIMPL, "the provider does not support this"},
    {E_POINTER, "MAPI is not started"},
    {E_ABORT, "the operation was aborted"},
    {E_UNEXPECTED, "the provider failed unexpectedly"},
    {STG_E_MEDIUMFULL, "the disk is full"},
    {STG_E_ACCESSDENIED, "access is denied"},
    {STG_E_WRITEFAULT, "writing failed"},
    {STG_E_READFAULT, "reading failed"},
};

/// The name of a result code and the code, "MAPI_E_NOT_FOUND 0x8004010F".
std::string NamedCode(HRESULT result)
{
    if (const char* name = NameOfResult(result))
    {
        return name + std::string(" ") + TextOfResult(result);
    }
    for (const OtherCode& each : OtherCodes)
    {
        if (each.code == result)
        {
            return each.text + (" (" + TextOfResult(result) + ")");
        }
    }
    return "unknown error (" + TextOfResult(result) + ")";
}

/// The provider's error text, extracted from an exception's description ("Ver:0, Error:..., Component:..., ..."); empty
/// when the description has no extended error.
std::string ProviderSentence(const std::string& description)
{
    constexpr const char* Begin = ", Error:";
    const size_t error = description.find(Begin);
    const size_t component = description.rfind(", Component:");
    if (description.compare(0, 4, "Ver:") != 0 || error == std::string::npos || component == std::string::npos)
    {
        return {};
    }
    const size_t from = error + std::char_traits<char>::length(Begin);
    return component > from ? description.substr(from, component - from) : std::string();
}

std::string Describe(CException& exception)
{
    const auto* mapi = dynamic_cast<CZebException*>(&exception);
    const CStringA description = Zeb_GetExceptionDescription(&exception);
    const std::string text = static_cast<const char*>(description);
    if (mapi == nullptr)
    {
        return text;
    }
    const std::string sentence = ProviderSentence(text);
    const std::string code = NamedCode(const_cast<CZebException*>(mapi)->GetResult());
    return sentence.empty() ? code : sentence + " (" + code + ")";
}

} // namespace

const char* NameOfResult(long result)
{
    return Zeb_NameFromValue("MAPIErrors", static_cast<ULONG>(result), nullptr);
}

std::string TextOfResult(long result)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(result));
    return text;
}

std::string CurrentFailure()
{
    try
    {
        throw;
    }
    catch (CException* exception)
    {
        const std::string text = Describe(*exception);
        exception->Delete();
        return OneLine(Utf8FromNarrow(text));
    }
    catch (const _com_error& error)
    {
        return NamedCode(error.Error());
    }
    catch (const std::exception& error)
    {
        return OneLine(error.what());
    }
    catch (...)
    {
        return "unknown error";
    }
}

long CurrentResult()
{
    try
    {
        throw;
    }
    catch (CZebException* exception)
    {
        return exception->GetResult();
    }
    catch (const _com_error& error)
    {
        return error.Error();
    }
    catch (const ToolError& error)
    {
        return error.Result();
    }
    catch (...)
    {
        return 0;
    }
}

ToolError CurrentError(const std::string& before, const std::string& after)
{
    const long result = CurrentResult();
    return ToolError(before + CurrentFailure() + after, result);
}

void FailWhile(const std::string& doing)
{
    throw CurrentError(doing + ": ");
}

void ComplainOf(const char* tool, const ToolFailure& failure)
{
    const std::string name = Toned(Tone::Removed, std::string(tool) + ":", platform::OutputStream::Error);
    std::fprintf(stderr, "%s %s\n", name.c_str(), failure.text.c_str());
}

void Complain(const char* tool, const std::string& text)
{
    std::fprintf(stderr, "%s: %s\n", tool, text.c_str());
}

int RunTool(const std::function<void(const ToolFailure&)>& report, const std::function<int()>& body)
{
    ToolFailure failure;
    try
    {
        const int code = body();
        FlushOutput();
        return code;
    }
    catch (const UsageError& error)
    {
        failure = {OneLine(error.what()), ExitUsage, 0};
    }
    catch (...)
    {
        failure.result = CurrentResult();
        failure.text = CurrentFailure();
    }
    std::fflush(stdout);
    report(failure);
    return failure.exitCode;
}

} // namespace zeb::tools
