#pragma once
// Interface language: the suite-wide stored choice, the command line and the
// run-time switch all end in applyLanguage().

#include <QString>

class QTranslator;

extern const char* const kLanguageChinese;  // "CH"
extern const char* const kLanguageEnglish;  // "ENG"

// The five catalogues, in the order they are installed.
QTranslator* const* languageTranslators();
int languageTranslatorCount();

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
