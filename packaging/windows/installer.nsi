; The installer of ZebAPI for one user, without elevation. scripts/make-installer.py calls makensis with
;   VERSION, OUTFILE, LICENCE   as their names say
;   LISTS                       a folder with NAME-install.nsh and NAME-remove.nsh of each tree (mingw, msvc)
; Command line: /S silent, /D=FOLDER (last) the folder, /PROVIDER registers zebstore as the MAPI provider.
Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
SetDateSave off
RequestExecutionLevel user
ManifestDPIAware true
Name "ZebAPI ${VERSION}"
OutFile "${OUTFILE}"
InstallDir "$LOCALAPPDATA\Programs\ZebAPI"
InstallDirRegKey HKCU "Software\ZebAPI" "Folder"
BrandingText " "
ShowInstDetails nevershow
VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "ZebAPI"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "Installs ZebAPI"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "The ZebAPI authors"

!include MUI2.nsh
!include FileFunc.nsh
!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\ZebAPI"

!insertmacro MUI_PAGE_LICENSE "${LICENCE}"
!insertmacro MUI_PAGE_COMPONENTS
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

Section "Tools, and library for MinGW-w64" SectionTools
  SectionIn RO
  ClearErrors
  !include "${LISTS}/mingw-install.nsh"
  IfErrors 0 written
    SetErrorLevel 2
    Abort "writing to $INSTDIR failed"
  written:
  WriteUninstaller "$INSTDIR\uninstall.exe"
  WriteRegStr HKCU "Software\ZebAPI" "Folder" "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL}" "DisplayName" "ZebAPI"
  WriteRegStr HKCU "${UNINSTALL}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${UNINSTALL}" "Publisher" "The ZebAPI authors"
  WriteRegStr HKCU "${UNINSTALL}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKCU "${UNINSTALL}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKCU "${UNINSTALL}" "NoModify" 1
  WriteRegDWORD HKCU "${UNINSTALL}" "NoRepair" 1
SectionEnd

Section "Library for MSVC" SectionMsvc
  ClearErrors
  !include "${LISTS}/msvc-install.nsh"
  IfErrors 0 written
    SetErrorLevel 2
    Abort "writing to $INSTDIR\msvc failed"
  written:
SectionEnd

Section "Start menu: command prompt with zeb" SectionMenu
  ; PATH of the user stays as it is; this prompt has its own.
  CreateDirectory "$SMPROGRAMS\ZebAPI"
  SetOutPath "$INSTDIR"
  CreateShortcut "$SMPROGRAMS\ZebAPI\ZebAPI command prompt.lnk" "$SYSDIR\cmd.exe" '/k "set PATH=$INSTDIR\bin;%PATH%"'
  IfFileExists "$INSTDIR\bin\zebview.exe" 0 +2
    CreateShortcut "$SMPROGRAMS\ZebAPI\zebview.lnk" "$INSTDIR\bin\zebview.exe"
SectionEnd

Section /o "Register zebstore as the MAPI provider (administrators)" SectionProvider
  ; $2: 1 when the mail client's key is there already, 2 when zeb creates it.
  StrCpy $2 2
  StrCpy $3 0
  next:
    EnumRegKey $4 HKLM "SOFTWARE\Clients\Mail" $3
    StrCmp $4 "" listed
    IntOp $3 $3 + 1
    StrCmp $4 "Microsoft Outlook" 0 next
    StrCpy $2 1
  listed:
  nsExec::ExecToLog '"$INSTDIR\bin\zeb.exe" provider install'
  Pop $0
  StrCmp $0 0 0 refused
    WriteRegDWORD HKCU "Software\ZebAPI" "ProviderRegistered" $2
    Goto registered
  refused:
    SetErrorLevel 3
    DetailPrint "zeb provider install failed: another provider is registered, or only an administrator can register one"
  registered:
SectionEnd

Function .onInit
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/PROVIDER" $1
  IfErrors done
    !insertmacro SelectSection ${SectionProvider}
  done:
  ClearErrors
FunctionEnd

Section "Uninstall"
  ; Only what the installer made: files by their names, folders if they are empty, the registration if it registered.
  ReadRegDWORD $0 HKCU "Software\ZebAPI" "ProviderRegistered"
  IntCmp $0 0 removed
    nsExec::ExecToLog '"$INSTDIR\bin\zeb.exe" provider remove'
    Pop $1
    IntCmp $0 2 0 removed removed
    DeleteRegKey /ifnosubkeys /ifnovalues HKLM "SOFTWARE\Clients\Mail\Microsoft Outlook"
  removed:
  SetOutPath "$TEMP"
  !include "${LISTS}/msvc-remove.nsh"
  !include "${LISTS}/mingw-remove.nsh"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  Delete "$SMPROGRAMS\ZebAPI\ZebAPI command prompt.lnk"
  Delete "$SMPROGRAMS\ZebAPI\zebview.lnk"
  RMDir "$SMPROGRAMS\ZebAPI"
  DeleteRegKey HKCU "${UNINSTALL}"
  DeleteRegKey HKCU "Software\ZebAPI"
SectionEnd
