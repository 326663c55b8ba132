// The tasks of docs/from-mapi.md, on MAPI's interfaces and with the library's classes. Both forms have the same names.
#pragma once

#include "zebapi/ZebAPI.h"

#include <string>
#include <vector>

using Text = std::basic_string<WCHAR>;

/// The property set of the task about named properties.
constexpr GUID TaskSet = {0x7A656254, 0x6F75, 0x7221, {0xA1, 1, 2, 3, 4, 5, 6, 7}};

namespace raw
{

HRESULT WithSession(HRESULT (*use)(IMAPISession* session));
HRESULT OpenInbox(IMAPISession* session, IMAPIFolder** inbox);
HRESULT ReadSubjects(IMAPITable* contents, std::vector<Text>& subjects);
HRESULT RestrictToUnread(IMAPITable* contents, const WCHAR* word);
HRESULT ReadBody(IMessage* message, Text& body);
HRESULT CreateMessage(IMAPIFolder* folder, const WCHAR* subject, const WCHAR* address, IMessage** created);
HRESULT WriteStars(IMessage* message, LONG stars);
HRESULT DeleteFolder(IMAPIFolder* parent, const SBinary& folder, std::string& failure);

} // namespace raw

namespace wrapped
{

void WithSession(void (*use)(CZebSession& session));
CZebFolder OpenInbox(CZebSession& session);
std::vector<Text> ReadSubjects(CZebTable& contents);
void RestrictToUnread(CZebTable& contents, const WCHAR* word);
CStringW ReadBody(CZebMessage& message);
CZebMessage CreateMessage(CZebFolder& folder, const WCHAR* subject, const WCHAR* address);
void WriteStars(CZebMessage& message, LONG stars);
void DeleteFolder(CZebFolder& parent, const SBinary& folder, std::string& failure);

} // namespace wrapped
