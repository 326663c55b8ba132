#include "zebapi/constants/internal/EntryPoints.h"

namespace zeb
{

const EntryPointRow UndecoratedEntryPoints[EntryPointCount] = {
    {EntryPoint::MAPIInitialize, "MAPIInitialize"},
    {EntryPoint::MAPIUninitialize, "MAPIUninitialize"},
    {EntryPoint::MAPILogonEx, "MAPILogonEx"},
    {EntryPoint::MAPIAdminProfiles, "MAPIAdminProfiles"},
    {EntryPoint::HrGetOneProp, "HrGetOneProp"},
    {EntryPoint::HrSetOneProp, "HrSetOneProp"},
    {EntryPoint::HrValidateIPMSubtree, "HrValidateIPMSubtree"},
    {EntryPoint::FreeProws, "FreeProws"},
    {EntryPoint::HrQueryAllRows, "HrQueryAllRows"},
    {EntryPoint::PropCopyMore, "PropCopyMore"},
};

const EntryPointRow DecoratedEntryPoints[EntryPointCount] = {
    {EntryPoint::MAPIInitialize, "MAPIInitialize"},
    {EntryPoint::MAPIUninitialize, "MAPIUninitialize"},
    {EntryPoint::MAPILogonEx, "MAPILogonEx"},
    {EntryPoint::MAPIAdminProfiles, "MAPIAdminProfiles"},
    {EntryPoint::HrGetOneProp, "HrGetOneProp@12"},
    {EntryPoint::HrSetOneProp, "HrSetOneProp@8"},
    {EntryPoint::HrValidateIPMSubtree, "HrValidateIPMSubtree@20"},
    {EntryPoint::FreeProws, "FreeProws@4"},
    {EntryPoint::HrQueryAllRows, "HrQueryAllRows@24"},
    {EntryPoint::PropCopyMore, "PropCopyMore@16"},
};

const char* const DecoratedTestList[] = {
    "MAPIInitialize",
    "MAPIUninitialize",
    "MAPILogonEx",
    "MAPIOpenFormMgr",
    "MAPIAdminProfiles",
    "MAPIAllocateBuffer",
    "MAPIAllocateMore",
    "MAPIFreeBuffer",
    "CreateTable@36",
    "HrGetOneProp@12",
    "HrSetOneProp@8",
    "HrValidateIPMSubtree@20",
    "UlRelease@4",
    "FreeProws@4",
    "HrQueryAllRows@24",
    "FBinFromHex@8",
    "HexFromBin@12",
    "ScBinFromHexBounded@12",
    "ScCopyNotifications@16",
    "OpenIMsgOnIStg@44",
    "OpenStreamOnFile",
    "RTFSync@12",
    nullptr,
};

const char* const UndecoratedTestList[] = {
    "MAPIInitialize",
    "MAPIUninitialize",
    "MAPILogonEx",
    "MAPIOpenFormMgr",
    "MAPIAdminProfiles",
    "MAPIAllocateBuffer",
    "MAPIAllocateMore",
    "MAPIFreeBuffer",
    "CreateTable",
    "HrGetOneProp",
    "HrSetOneProp",
    "HrValidateIPMSubtree",
    "UlRelease",
    "FreeProws",
    "HrQueryAllRows",
    "FBinFromHex",
    "HexFromBin",
    "ScBinFromHexBounded",
    "ScCopyNotifications",
    "OpenIMsgOnIStg",
    "OpenStreamOnFile",
    "RTFSync",
    nullptr,
};

const char OutlookLanguageQualifier[] = "Microsoft\\Office\\9.0\\Outlook\0LastUILanguage\0";
const char OfficeLanguageQualifier[] =
    "Microsoft\\Office\\9.0\\Common\\LanguageResources\0UILanguage\0InstallLanguage\0";

} // namespace zeb
