; SPDX-License-Identifier: MIT
; The installer: per user, without administrator rights.
;
; The program goes into the user's folder for programs, where it can write its settings file. It keeps the
; cards and the layout scale in its working folder: a folder in the user's documents, which the Start menu
; shortcut sets. An update keeps cards and settings.
;
; makensis -DVERSION=... -DSTAGED=folder-with-the-files -DSETUP=result.exe -DICON=... -DSIDE=...

Target amd64-unicode
!include LogicLib.nsh
!include MUI2.nsh

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Percussomatic"

Name "Percussomatic"
OutFile "${SETUP}"
RequestExecutionLevel user
InstallDir "$LOCALAPPDATA\Programs\Percussomatic"
InstallDirRegKey HKCU "${UNINSTALL_KEY}" "InstallLocation"
SetCompressor /SOLID lzma
SetCompressorDictSize 64
SetDateSave off ; for a reproducible installer
ManifestDPIAware true
BrandingText "Percussomatic ${VERSION}"

VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "Percussomatic"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "Installs Percussomatic"
VIAddVersionKey "CompanyName" "Percussomatic developers"
VIAddVersionKey "LegalCopyright" "Percussomatic developers, 2026. MIT licence."

Var Cards ; the working folder, with PunchCards and the layout scale

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_WELCOMEFINISHPAGE_BITMAP "${SIDE}"
!define MUI_WELCOMEPAGE_TITLE "Percussomatic ${VERSION}"
!define MUI_WELCOMEPAGE_TEXT "This installs Percussomatic for your user account only. Administrator rights are not needed.$\r$\n$\r$\nYour punch cards are kept in the folder Percussomatic in your documents. An older version is replaced; your cards and settings are kept.$\r$\n$\r$\nClick Install to continue."
!define MUI_FINISHPAGE_TITLE "Ready to play"
!define MUI_FINISHPAGE_TEXT "Percussomatic is in your Start menu."
!define MUI_FINISHPAGE_RUN
!define MUI_FINISHPAGE_RUN_TEXT "Play now"
!define MUI_FINISHPAGE_RUN_FUNCTION play
!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

; The files of a running program cannot be replaced or removed.
!macro requireProgramClosed
    ${If} ${FileExists} "$INSTDIR\Percussomatic.exe"
        ${Do}
            ClearErrors
            FileOpen $0 "$INSTDIR\Percussomatic.exe" a
            ${IfNot} ${Errors}
                FileClose $0
                ${ExitDo}
            ${EndIf}
            MessageBox MB_RETRYCANCEL|MB_ICONEXCLAMATION "Percussomatic is running. Please close it, then try again." /SD IDCANCEL IDRETRY +3
            SetErrorLevel 2
            Quit
        ${Loop}
    ${EndIf}
!macroend

Function .onInit
    !insertmacro requireProgramClosed
FunctionEnd

; If the documents folder is not writable, for example because of ransomware protection, the cards go into
; the user's local application data.
Function chooseCards
    ReadRegStr $Cards HKCU "${UNINSTALL_KEY}" "CardFolder"
    ${If} $Cards == ""
        StrCpy $Cards "$DOCUMENTS\Percussomatic"
    ${EndIf}
    ClearErrors
    CreateDirectory "$Cards"
    GetTempFileName $0 "$Cards"
    ${If} ${Errors}
        StrCpy $Cards "$LOCALAPPDATA\Percussomatic"
        CreateDirectory "$Cards"
    ${Else}
        Delete "$0"
    ${EndIf}
FunctionEnd

Function play
    SetOutPath "$Cards"
    Exec '"$INSTDIR\Percussomatic.exe"'
FunctionEnd

Section
    SetOutPath "$INSTDIR"
    File "${STAGED}\Percussomatic.exe"
    File "${STAGED}\percussomatic-card.exe"
    File "${STAGED}\Manual.html"
    File "${STAGED}\LICENSE.txt"
    File "${STAGED}\LICENSE-libraries.txt"
    SetOutPath "$INSTDIR\FactoryCards"
    File "${STAGED}\FactoryCards\card_*.vopcard"

    Call chooseCards
    ${IfNot} ${FileExists} "$Cards\PunchCards\*.*"
        SetOutPath "$Cards\PunchCards"
        File "${STAGED}\PunchCards\card_*.vopcard"
    ${EndIf}

    CreateDirectory "$SMPROGRAMS\Percussomatic"
    SetOutPath "$Cards" ; becomes the working folder of the shortcuts
    CreateShortCut "$SMPROGRAMS\Percussomatic\Percussomatic.lnk" "$INSTDIR\Percussomatic.exe"
    CreateShortCut "$SMPROGRAMS\Percussomatic\Manual.lnk" "$INSTDIR\Manual.html"

    SetOutPath "$INSTDIR"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "Percussomatic"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\Percussomatic.exe"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "Publisher" "Percussomatic developers"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "CardFolder" "$Cards"
    WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
    SectionGetSize 0 $0
    WriteRegDWORD HKCU "${UNINSTALL_KEY}" "EstimatedSize" $0
SectionEnd

Function un.onInit
    !insertmacro requireProgramClosed
FunctionEnd

; Removes only files that the installer created, and folders only if they are then empty.
Section "Uninstall"
    ReadRegStr $Cards HKCU "${UNINSTALL_KEY}" "CardFolder"
    Delete "$INSTDIR\Percussomatic.exe"
    Delete "$INSTDIR\percussomatic-card.exe"
    Delete "$INSTDIR\Manual.html"
    Delete "$INSTDIR\LICENSE.txt"
    Delete "$INSTDIR\LICENSE-libraries.txt"
    Delete "$INSTDIR\FactoryCards\card_*.vopcard"
    RMDir "$INSTDIR\FactoryCards"
    Delete "$INSTDIR\uninstall.exe"
    Delete "$SMPROGRAMS\Percussomatic\Percussomatic.lnk"
    Delete "$SMPROGRAMS\Percussomatic\Manual.lnk"
    RMDir "$SMPROGRAMS\Percussomatic"
    DeleteRegKey HKCU "${UNINSTALL_KEY}"

    MessageBox MB_YESNO|MB_DEFBUTTON2|MB_ICONQUESTION "Do you want to remove your punch cards and settings too?$\r$\n$\r$\nThe cards are in $Cards\PunchCards." /SD IDNO IDNO kept
    ; The program's folder has the settings, and cards if the program was started from there.
    Delete "$INSTDIR\Percussomatic.ini"
    Delete "$INSTDIR\MidiMappings.ini"
    Delete "$INSTDIR\LumivardaLayoutScale.txt"
    RMDir /r "$INSTDIR\PunchCards"
    ${If} $Cards != ""
        Delete "$Cards\LumivardaLayoutScale.txt"
        RMDir /r "$Cards\PunchCards"
        RMDir "$Cards"
    ${EndIf}
kept:
    SetOutPath "$TEMP" ; the current folder cannot be removed
    RMDir "$INSTDIR"
SectionEnd
