#pragma once

#include "CustomCtrExport.h"

#include <QString>

// Process-wide settings of the widget library.
namespace Custom {

// Unscoped: the language travels as a plain int through settings and callers.
enum Language { Chinese = 0, English = 1 };

// Selects the language the suite shows (0 Chinese, 1 English). Other values
// are ignored. Thread-safe. The library's own texts follow the installed
// translators; this flag tells callers which manual or data set to pick.
CUSTOMCTR_EXPORT void setLanguage(int language);

// The current language; English until setLanguage is called.
CUSTOMCTR_EXPORT int language();

// Resource path of the default theme inside CustomCtr_Default.rcc.
CUSTOMCTR_EXPORT QString defaultStyleSheetPath();

// The default theme's style sheet, or an empty string when the bundle has not
// been registered with QResource::registerResource (widgets then keep the
// platform's plain look).
CUSTOMCTR_EXPORT QString defaultStyleSheet();

} // namespace Custom
