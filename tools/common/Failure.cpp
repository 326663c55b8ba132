#include "tools/common/Failure.h"

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

std::string CodeText(HRESULT result)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08X", static_cast<unsigned>(result));
    return text;
}

/// The name of a result code and the code, "MAPI_E_NOT_FOUND 0x8004010F".
std::string NamedCode(HRESULT result)
{
    if (const char* name = Zeb_NameFromValue("MAPIErrors", static_cast<ULONG>(result), nullptr))
    {
        return name + std::string(" ") + CodeText(result);
    }
    for (const OtherCode& each : OtherCodes)
    {
        if (each.code == result)
        {
            return each.text + (" (" + CodeText(result) + ")");
        }
    }
    return "unknown error (" + CodeText(result) + ")";
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
    catch (...)
    {
        return E_FAIL;
    }
}

void FailWhile(const std::string& doing)
{
    throw ToolError(doing + ": " + CurrentFailure());
}

void Complain(const char* tool, const std::string& text)
{
    std::fprintf(stderr, "%s: %s\n", tool, text.c_str());
}

int RunTool(const char* tool, const std::function<int()>& body)
{
    try
    {
        const int code = body();
        FlushOutput();
        return code;
    }
    catch (const UsageError& error)
    {
        std::fflush(stdout);
        Complain(tool, OneLine(error.what()));
        return ExitUsage;
    }
    catch (...)
    {
        const std::string text = CurrentFailure();
        std::fflush(stdout);
        Complain(tool, text);
        return ExitFailed;
    }
}

} // namespace zeb::tools
