#pragma once
// Interface language: the suite-wide stored choice, the command line and the
// run-time switch all end in applyLanguage().

#include <QByteArray>
#include <QString>
#include <QStringList>


extern const char* const kLanguageChinese;  // "CH"
extern const char* const kLanguageEnglish;  // "ENG"

// The shared settings file: programDataPath() + "/CustomConfig.ini", every
// "VANTO" in the path replaced by "ZELTA".
QString languageSettingsPath();

// The code stored as Base64 under "Language" in the shared settings file;
// empty when the file or key is missing.
QString readLanguage();

// Switches the process to "CH" or "ENG"; any other code changes nothing.
// False only when a Chinese catalogue failed to load: the ones loaded before
// it stay installed.
bool applyLanguage(const QString& code);

// Start-up: the stored language, then a first argument that is exactly "CH"
// or "ENG" (any other argument is ignored), so the command line wins.
void applyStartupLanguage(const QStringList& arguments);

// A switch asked for from outside while the tool runs (a window message or
// a later start): logged as "Quorvex CN" / "Quorvex ENG", then applied.
// Other codes are ignored.
void switchLanguageOnRequest(const QString& code);

// The two window messages that switch the language, as a desktop with
// window messages delivers them to nativeEvent: an event of type
// kWindowMessageEventType whose message starts like WindowMessageHead.
constexpr unsigned int kChineseLanguageMessage = 0x7FF;
constexpr unsigned int kEnglishLanguageMessage = 0x800;
extern const char* const kWindowMessageEventType; // "windows_generic_MSG"
struct WindowMessageHead
{
    void* hwnd;
    unsigned int message;
};

// "CH" or "ENG" for the two switch messages, empty for anything else; an
// event of another type (an X11 or Wayland event) is never read as one.
QString languageCodeForNativeEvent(const QByteArray& eventType, const void* message);
