; The installer: for one user, without an administrator. Made by scripts/release:
;   makensis -DVERSION=0.002 -DPAYLOAD=FOLDER -DICON=FILE.ico -DOUTPUT=FILE.exe bursaria.nsi
; /S installs or removes without a window; the exit status is then 0, or 2 where a program still runs.
Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
SetDateSave on
RequestExecutionLevel user
ManifestDPIAware true

!include "MUI2.nsh"
!include "LogicLib.nsh"

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\QuorvelleBursaria"
!define DATA_FOLDER "$LOCALAPPDATA\Quorvelle"

Name "The Bursaria"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\Bursaria"
BrandingText "The Bursaria ${VERSION}"
!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"

VIProductVersion "0.0.0.0"
VIAddVersionKey "ProductName" "The Bursaria"
VIAddVersionKey "CompanyName" "Quorvelle"
VIAddVersionKey "FileDescription" "Setup of The Bursaria"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "Quorvelle"

!define MUI_WELCOMEPAGE_TEXT "This installs The Bursaria ${VERSION} for your user alone, into$\r$\n$INSTDIR.$\r$\n$\r$\nAn older one is replaced. Your wallet, your ledger and your settings lie elsewhere and are not touched."
!define MUI_FINISHPAGE_RUN "$INSTDIR\Bursaria.exe"
!define MUI_FINISHPAGE_RUN_TEXT "Start The Bursaria"
!define MUI_FINISHPAGE_RUN_NOTCHECKED
!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH

!define MUI_UNCONFIRMPAGE_TEXT_TOP "The program is removed. Your wallet, your ledger of payments, your vaults and notes stay in ${DATA_FOLDER}."
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

; A program that runs may be in the middle of a payment, so it is never ended from here. The file of a running program
; cannot be opened for writing.
!macro RefuseWhileRunning PREFIX
Function ${PREFIX}RefuseWhileRunning
    Push $0
    Push $1
    ${For} $1 1 2
        StrCpy $0 "$INSTDIR\Bursaria.exe"
        ${If} $1 = 2
            StrCpy $0 "$INSTDIR\bursaria-console.exe"
        ${EndIf}
        ${If} ${FileExists} $0
            ClearErrors
            FileOpen $0 $0 a
            ${If} ${Errors}
                MessageBox MB_OK|MB_ICONEXCLAMATION "The Bursaria is running. Let it finish what it does, close it, and start this again." /SD IDOK
                SetErrorLevel 2
                Quit
            ${EndIf}
            FileClose $0
        ${EndIf}
    ${Next}
    Pop $1
    Pop $0
FunctionEnd
!macroend
!insertmacro RefuseWhileRunning ""
!insertmacro RefuseWhileRunning "un."

; What an installation of any version has laid down. No folder is removed with strangers' files in it.
!macro RemoveProgramFiles
    Delete "$INSTDIR\Bursaria.exe"
    Delete "$INSTDIR\bursaria-console.exe"
    Delete "$INSTDIR\README.txt"
    Delete "$INSTDIR\guide.md"
    Delete "$INSTDIR\files.md"
    Delete "$INSTDIR\licences\*.txt"
    RMDir "$INSTDIR\licences"
!macroend

Section "The Bursaria"
    Call RefuseWhileRunning
    !insertmacro RemoveProgramFiles
    SetOutPath "$INSTDIR"
    File /r "${PAYLOAD}/*"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    SetShellVarContext current
    CreateShortcut "$SMPROGRAMS\The Bursaria.lnk" "$INSTDIR\Bursaria.exe"

    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "The Bursaria"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "Publisher" "Quorvelle"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\Bursaria.exe"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

Section "Uninstall"
    Call un.RefuseWhileRunning
    !insertmacro RemoveProgramFiles
    Delete "$INSTDIR\uninstall.exe"
    RMDir "$INSTDIR"
    SetShellVarContext current
    Delete "$SMPROGRAMS\The Bursaria.lnk"
    DeleteRegKey HKCU "${UNINSTALL_KEY}"
    DetailPrint "Your wallet, your ledger of payments, your vaults and notes stay in ${DATA_FOLDER}."
SectionEnd
