// Prints the content of a profile's default store, one JSON object per line, every value as its bytes, for comparison
// with other readers of the same mail.
//
// store_dump PROFILE
#include "platform/text.h"
#include "zebapi/ZebAPI.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <string>
#include <vector>

namespace
{

using Json = nlohmann::ordered_json;

std::string Hex(const void* bytes, size_t size)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string text;
    for (size_t i = 0; i < size; ++i)
    {
        const unsigned char byte = static_cast<const unsigned char*>(bytes)[i];
        text += {digits[byte >> 4], digits[byte & 15]};
    }
    return text;
}

std::string Number(ULONG number)
{
    char text[16];
    std::snprintf(text, sizeof text, "0x%08x", static_cast<unsigned>(number));
    return text;
}

std::string Utf8(const WCHAR* text)
{
    return zeb::platform::Utf8FromWide(text, zeb::platform::WideLength(text));
}

/// The elements of a multi-valued property of numbers, `size` bytes each.
std::vector<std::string> Elements(const SPropValue& value, size_t size)
{
    std::vector<std::string> all;
    const auto* bytes = reinterpret_cast<const char*>(value.Value.MVl.lpl);
    for (ULONG i = 0; i < value.Value.MVl.cValues; ++i)
    {
        all.push_back(Hex(bytes + i * size, size));
    }
    return all;
}

std::vector<std::string> ValuesOf(const SPropValue& value)
{
    const auto& in = value.Value;
    std::vector<std::string> all;
    switch (PROP_TYPE(value.ulPropTag))
    {
    case PT_I2:
    case PT_BOOLEAN:
        return {Hex(&in, 2)};
    case PT_LONG:
    case PT_R4:
        return {Hex(&in, 4)};
    case PT_DOUBLE:
    case PT_APPTIME:
    case PT_CURRENCY:
    case PT_I8:
    case PT_SYSTIME:
        return {Hex(&in, 8)};
    case PT_CLSID:
        return {Hex(in.lpguid, 16)};
    case PT_STRING8:
        return {Hex(in.lpszA, std::char_traits<char>::length(in.lpszA))};
    case PT_UNICODE:
        return {Hex(in.lpszW, zeb::platform::WideLength(in.lpszW) * sizeof(WCHAR))};
    case PT_BINARY:
        return {Hex(in.bin.lpb, in.bin.cb)};
    case PT_MV_I2:
        return Elements(value, 2);
    case PT_MV_LONG:
    case PT_MV_R4:
        return Elements(value, 4);
    case PT_MV_DOUBLE:
    case PT_MV_APPTIME:
    case PT_MV_CURRENCY:
    case PT_MV_I8:
    case PT_MV_SYSTIME:
        return Elements(value, 8);
    case PT_MV_CLSID:
        return Elements(value, 16);
    case PT_MV_STRING8:
        for (ULONG i = 0; i < in.MVszA.cValues; ++i)
        {
            all.push_back(Hex(in.MVszA.lppszA[i], std::char_traits<char>::length(in.MVszA.lppszA[i])));
        }
        return all;
    case PT_MV_UNICODE:
        for (ULONG i = 0; i < in.MVszW.cValues; ++i)
        {
            all.push_back(Hex(in.MVszW.lppszW[i], zeb::platform::WideLength(in.MVszW.lppszW[i]) * sizeof(WCHAR)));
        }
        return all;
    case PT_MV_BINARY:
        for (ULONG i = 0; i < in.MVbin.cValues; ++i)
        {
            all.push_back(Hex(in.MVbin.lpbin[i].lpb, in.MVbin.lpbin[i].cb));
        }
        return all;
    default:
        return {};
    }
}

/// The complete value of a property that is too large for one call.
std::string StreamOf(CZebIProp& object, ULONG tag)
{
    const CComPtr<IStream> stream = object.OpenProperty(tag, 0);
    std::string text;
    std::vector<char> piece(1024 * 1024);
    for (;;)
    {
        ULONG got = 0;
        ThrowIfFailed(stream->Read(piece.data(), static_cast<ULONG>(piece.size()), &got));
        if (got == 0)
        {
            return text;
        }
        text += Hex(piece.data(), got);
    }
}

void AddName(CZebIProp& object, ULONG tag, Json& out)
{
    SPropTagArray one = {1, {tag}};
    SPropTagArray* pointer = &one;
    ULONG count = 0;
    MAPINAMEID** names = nullptr;
    const CComPtr<IMAPIProp> prop = object.GetInterface();
    ThrowIfFailed(prop->GetNamesFromIDs(&pointer, nullptr, 0, &count, &names), prop);
    if (count == 1 && names[0])
    {
        out["set"] = Hex(names[0]->lpguid, sizeof(GUID));
        if (names[0]->ulKind == MNID_STRING)
        {
            out["name"] = Utf8(names[0]->Kind.lpwstrName);
        }
        else
        {
            out["id"] = static_cast<ULONG>(names[0]->Kind.lID);
        }
    }
    Zeb_MemFree(names);
}

/// @param owner the object that maps the names of named properties
Json PropertyJson(CZebIProp& owner, const SPropValue& value)
{
    Json out = {{"tag", Number(value.ulPropTag)}};
    if (PROP_ID(value.ulPropTag) >= 0x8000)
    {
        AddName(owner, value.ulPropTag, out);
    }
    out["values"] = ValuesOf(value);
    return out;
}

Json PropertiesOf(CZebIProp& object)
{
    CZebPropTagArray tags;
    object.GetPropList(&tags, MAPI_UNICODE);
    Json all = Json::array();
    for (int i = 0; i < tags.GetCount(); ++i)
    {
        CZebPropTagArray one;
        one.AddOne(tags[i]);
        CZebPropValArray values;
        ULONG* const count = values.CountPtr();
        object.GetProps(one, count, &values, MAPI_UNICODE);
        const SPropValue& value = static_cast<const SPropValue&>(values.GetAt(0));
        if (PROP_TYPE(value.ulPropTag) != PT_ERROR)
        {
            all.push_back(PropertyJson(object, value));
            continue;
        }
        Json out = {{"tag", Number(tags[i])}};
        if (PROP_ID(tags[i]) >= 0x8000)
        {
            AddName(object, tags[i], out);
        }
        const bool large = value.Value.err == MAPI_E_NOT_ENOUGH_MEMORY && PROP_TYPE(tags[i]) != PT_OBJECT;
        if (large)
        {
            out["values"] = {StreamOf(object, tags[i])};
        }
        else
        {
            out["error"] = Number(static_cast<ULONG>(value.Value.err));
        }
        all.push_back(std::move(out));
    }
    return all;
}

Json MessageJson(const CComPtr<IMessage>& message);

Json RecipientsOf(const CComPtr<IMessage>& message)
{
    CComPtr<IMAPITable> raw;
    ThrowIfFailed(message->GetRecipientTable(MAPI_UNICODE, raw.Put()), message);
    CZebPropTagArray columns;
    ThrowIfFailed(raw->QueryColumns(TBL_ALL_COLUMNS, &columns), raw);
    CZebTable table(raw.Get());
    CZebRowSet rows;
    table.QueryAllRows(&rows, nullptr, nullptr);
    if (columns.GetCount() > 0)
    {
        table.SetColumns(columns);
        table.QueryAllRows(&rows, nullptr, nullptr);
    }
    CZebPropObj owner(message.Get());
    Json all = Json::array();
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        Json one = Json::array();
        for (ULONG c = 0; c < rows[i].Count(); ++c)
        {
            const CZebOnePropVal cell = rows[i].GetAt(static_cast<int>(c));
            const SPropValue& value = cell;
            if (PROP_TYPE(value.ulPropTag) != PT_ERROR)
            {
                one.push_back(PropertyJson(owner, value));
            }
        }
        all.push_back(std::move(one));
    }
    return all;
}

Json AttachmentJson(const CComPtr<IMessage>& message, ULONG number)
{
    CComPtr<IAttach> attachment;
    ThrowIfFailed(message->OpenAttach(number, nullptr, 0, attachment.Put()), message);
    CZebPropObj object(attachment.Get());
    Json out = {{"properties", PropertiesOf(object)}};
    CComPtr<IMessage> embedded;
    if (SUCCEEDED(attachment->OpenProperty(PR_ATTACH_DATA_OBJ, &IID_IMessage, 0, 0, embedded.PutAs<IUnknown>())))
    {
        out["message"] = MessageJson(embedded);
    }
    return out;
}

Json AttachmentsOf(const CComPtr<IMessage>& message)
{
    CComPtr<IMAPITable> raw;
    ThrowIfFailed(message->GetAttachmentTable(0, raw.Put()), message);
    CZebTable table(raw.Get());
    table.SetColumns(1, PR_ATTACH_NUM);
    CZebRowSet rows;
    table.QueryAllRows(&rows, nullptr, nullptr);
    Json all = Json::array();
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        all.push_back(AttachmentJson(message, static_cast<ULONG>(static_cast<LONG>(rows[i][PR_ATTACH_NUM]))));
    }
    return all;
}

Json MessageJson(const CComPtr<IMessage>& message)
{
    CZebMessage wrapper(message.Get());
    return {{"properties", PropertiesOf(wrapper)},
            {"recipients", RecipientsOf(message)},
            {"attachments", AttachmentsOf(message)}};
}

void PrintLine(const Json& line)
{
    std::printf("%s\n", line.dump(-1, ' ', true, Json::error_handler_t::replace).c_str());
}

void DumpMessages(CZebFolder& folder, const std::vector<std::string>& path, bool associated)
{
    CZebTable table = folder.GetContentsTable(associated ? MAPI_ASSOCIATED : 0);
    table.SetColumns(1, PR_ENTRYID);
    CZebRowSet rows;
    table.QueryAllRows(&rows, nullptr, nullptr);
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        CZebMessage wrapper(nullptr);
        folder.OpenEntry(rows[i][PR_ENTRYID], wrapper, 0);
        CComPtr<IMessage> message;
        ThrowIfFailed(wrapper.GetInterface().QueryInterface(IID_IMessage, message));
        Json line = {{"kind", "message"}, {"folder", path}, {"associated", associated}};
        line.update(MessageJson(message));
        PrintLine(line);
    }
}

void DumpFolder(CZebFolder& folder, const std::vector<std::string>& path)
{
    PrintLine({{"kind", "folder"}, {"folder", path}, {"properties", PropertiesOf(folder)}});
    DumpMessages(folder, path, false);
    DumpMessages(folder, path, true);
    CZebTable table = folder.GetHierarchyTable(0);
    table.SetColumns(2, PR_DISPLAY_NAME_W, PR_ENTRYID);
    CZebRowSet rows;
    table.QueryAllRows(&rows, nullptr, nullptr);
    for (ULONG i = 0; i < rows.Count(); ++i)
    {
        CZebFolder child(nullptr);
        folder.OpenEntry(rows[i][PR_ENTRYID], child, 0);
        std::vector<std::string> below = path;
        below.push_back(Utf8(static_cast<CStringW>(rows[i][PR_DISPLAY_NAME_W])));
        DumpFolder(child, below);
    }
}

void DumpStore(const char* profile)
{
    CZebSession session = Zeb_GetMAPI().OpenSession(nullptr, profile);
    {
        CZebMsgStore store = session.OpenDefaultMsgStore(nullptr, MAPI_BEST_ACCESS | MDB_NO_DIALOG);
        PrintLine({{"kind", "store"}, {"properties", PropertiesOf(store)}});
        CZebFolder root(nullptr);
        store.OpenEntry(SBinary{0, nullptr}, root, 0);
        DumpFolder(root, {});
    }
    session.Logoff(0, 0, 0);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
    {
        std::fprintf(stderr, "usage: store_dump PROFILE\n");
        return 2;
    }
    try
    {
        Zeb_GetMAPI().Initialize(false);
        DumpStore(argv[1]);
        Zeb_GetMAPI().Uninitialize(nullptr);
        return std::fflush(stdout) == 0 ? 0 : 1;
    }
    catch (CZebException* exception)
    {
        std::fprintf(stderr, "store_dump: %s\n", Zeb_GetExceptionDescription(exception).GetString());
        exception->Delete();
        return 1;
    }
}
