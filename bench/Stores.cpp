#include "bench/Stores.h"

#include "platform/module.h"
#include "platform/registry.h"
#include "platform/tags.h"
#include "zebstore/zebstore.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <unistd.h>

namespace bench
{

namespace
{

const char* const Senders[] = {"Ada Brandt", "Boris Cole", "Chen Wei", "Dana Ford", "Emil Gray", "Fatima Haddad"};
const char* const Words[] = {"budget", "meeting",  "contract", "draft",  "schedule", "review", "invoice", "travel",
                             "report", "question", "answer",   "agenda", "summary",  "launch", "update",  "minutes"};

/// A reproducible scramble of `number` (a 32-bit finaliser), so that neither subjects nor dates come in order.
ULONG Scramble(ULONG number)
{
    number ^= number >> 16;
    number *= 0x7FEB352Du;
    number ^= number >> 15;
    number *= 0x846CA68Bu;
    return number ^ (number >> 16);
}

FILETIME DateOf(ULONG number)
{
    const unsigned long long ticks = 132000000000000000ull + Scramble(number ^ 0x5A5Au) * 10000000ull;
    return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

void Check(HRESULT result, const char* what)
{
    if (FAILED(result))
    {
        char text[200];
        std::snprintf(text, sizeof(text), "%s failed with 0x%08X.", what, static_cast<unsigned>(result));
        throw std::runtime_error(text);
    }
}

} // namespace

const ULONG MessageTags[12] = {
    PR_SUBJECT_W,     PR_MESSAGE_CLASS_W,       PR_SENDER_NAME_W,      PR_SENDER_EMAIL_ADDRESS_W,
    PR_DISPLAY_TO_W,  PR_MESSAGE_DELIVERY_TIME, PR_CLIENT_SUBMIT_TIME, PR_IMPORTANCE,
    PR_MESSAGE_FLAGS, PR_INTERNET_MESSAGE_ID_W, PR_SEARCH_KEY,         PR_BODY_W};

void FillMessage(CZebPropValArray& values, ULONG number)
{
    const ULONG mixed = Scramble(number);
    const char* sender = Senders[mixed % 6];
    CStringA subject, address, identifier, body;
    subject.Format("%s %s of week %u (%08x)", Words[mixed % 16], Words[(mixed >> 4) % 16], mixed % 53, number);
    address.Format("%.4s%u@example.org", sender, mixed % 97);
    identifier.Format("<%08x.%08x@example.org>", number, mixed);
    body.Format("The %s is attached. Please read it before the %s on day %u.", Words[(mixed >> 8) % 16],
                Words[(mixed >> 12) % 16], mixed % 28);
    const auto wide = [](const CStringA& text)
    {
        std::basic_string<WCHAR> result;
        for (int i = 0; i < text.GetLength(); ++i)
        {
            result += static_cast<WCHAR>(text[i]);
        }
        return CStringW(result.c_str());
    };
    const FILETIME date = DateOf(number);
    ULONG key[4] = {number, mixed, ~number, ~mixed};
    SBinary searchKey = {sizeof(key), reinterpret_cast<BYTE*>(key)};
    values[PR_SUBJECT_W] = wide(subject);
    values[PR_MESSAGE_CLASS_W] = wide("IPM.Note");
    values[PR_SENDER_NAME_W] = wide(sender);
    values[PR_SENDER_EMAIL_ADDRESS_W] = wide(address);
    values[PR_DISPLAY_TO_W] = wide("Everybody");
    values[PR_MESSAGE_DELIVERY_TIME] = date;
    values[PR_CLIENT_SUBMIT_TIME] = date;
    values[PR_IMPORTANCE] = static_cast<LONG>(mixed % 3);
    values[PR_MESSAGE_FLAGS] = static_cast<LONG>(mixed & MSGFLAG_READ);
    values[PR_INTERNET_MESSAGE_ID_W] = wide(identifier);
    values[PR_SEARCH_KEY] = searchKey;
    values[PR_BODY_W] = wide(body);
}

void RegisterProvider(const char* file)
{
    using namespace zeb::platform;
    RegistryKey::Create(RegistryRoot::LocalMachine, "SOFTWARE\\Clients\\Mail\\Microsoft Outlook")
        .SetStringValue("DLLPathEx", OwnFolder() + file);
}

void MakeProfile(const std::string& name, const std::string& path, const char* index)
{
    CZebProfAdmin wrapper = CZebProfAdmin::Open();
    CComPtr<IProfAdmin> admin = wrapper.GetInterface();
    LPTSTR profile = reinterpret_cast<LPTSTR>(const_cast<char*>(name.c_str()));
    admin->DeleteProfile(profile, 0);
    Check(admin->CreateProfile(profile, nullptr, 0, 0), "IProfAdmin::CreateProfile");
    CComPtr<IMsgServiceAdmin> services;
    Check(admin->AdminServices(profile, nullptr, 0, 0, services.Put()), "IProfAdmin::AdminServices");
    LPTSTR service = reinterpret_cast<LPTSTR>(const_cast<char*>(ZEBSTORE_SERVICE_NAME));
    Check(services->CreateMsgService(service, service, 0, 0), "IMsgServiceAdmin::CreateMsgService");
    CComPtr<IMAPITable> list;
    Check(services->GetMsgServiceTable(0, list.Put()), "IMsgServiceAdmin::GetMsgServiceTable");
    CZebTable table(list.Get());
    table.SetColumns(1, PR_SERVICE_UID);
    CZebRowSet rows;
    table.QueryRows(&rows, 1, nullptr, nullptr);
    const SBinary& uid = rows[0][PR_SERVICE_UID];
    SPropValue settings[2] = {};
    settings[0].ulPropTag = PR_ZEBSTORE_PATH_A;
    settings[0].Value.lpszA = const_cast<char*>(path.c_str());
    settings[1].ulPropTag = PR_ZEBSTORE_INDEX_A;
    settings[1].Value.lpszA = const_cast<char*>(index);
    Check(services->ConfigureMsgService(reinterpret_cast<MAPIUID*>(uid.lpb), 0, 0, index != nullptr ? 2 : 1, settings),
          "IMsgServiceAdmin::ConfigureMsgService");
}

void DeleteStore(const std::string& path)
{
    for (const char* suffix : {"", "-wal", "-shm"})
    {
        std::filesystem::remove(path + suffix);
    }
}

void MakeStore(const std::string& name, const std::string& path, const char* index)
{
    DeleteStore(path);
    MakeProfile(name, path, index);
    CZebSession session = Zeb_GetMAPI().OpenSession(nullptr, name.c_str());
    session.OpenDefaultMsgStore(nullptr, MDB_WRITE | MAPI_BEST_ACCESS).Free();
    session.Logoff(0, 0, 0);
}

StoreOf::StoreOf(const std::string& folder, ULONG count)
    : m_path(folder + "/messages-" + std::to_string(count) + ".zeb")
    , m_count(count)
    , m_session(nullptr)
{
    const std::string profile = "messages-" + std::to_string(count);
    MakeProfile(profile, m_path);
    m_session = Zeb_GetMAPI().OpenSession(nullptr, profile.c_str());
    m_store = m_session.OpenDefaultMsgStore(nullptr, MDB_WRITE | MAPI_BEST_ACCESS);
    m_inbox = m_store.OpenInboxFolder(MAPI_BEST_ACCESS);
    const ULONG present = m_inbox.GetContentsTable(0).GetRowCount();
    if (present > count)
    {
        throw std::runtime_error("'" + m_path + "' holds more messages than it should; delete it.");
    }
    if (present < count)
    {
        Fill(present);
    }
}

StoreOf::~StoreOf()
{
    Close();
}

void StoreOf::Close()
{
    m_inbox.Free();
    m_store.Free();
    if (m_session.IsValid())
    {
        m_session.Logoff(0, 0, 0);
    }
}

void StoreOf::Fill(ULONG from)
{
    const bool terminal = isatty(STDERR_FILENO) != 0;
    for (ULONG number = from; number < m_count; ++number)
    {
        CZebPropValArray values(12);
        FillMessage(values, number);
        m_inbox.CreateMessage(0).SetProps(values, true, nullptr);
        if (terminal && number % 5000 == 0)
        {
            std::fprintf(stderr, "\rmaking %s: %u of %u messages", m_path.c_str(), static_cast<unsigned>(number),
                         static_cast<unsigned>(m_count));
        }
    }
    if (terminal)
    {
        std::fprintf(stderr, "\r\033[K");
    }
}

} // namespace bench
