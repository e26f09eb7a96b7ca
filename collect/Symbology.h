#pragma once
// The tool's symbology table: numbers as the code-reader SDK reports them,
// names as ImportInformation.csv carries them.

#include <QString>

namespace collect {

// "NONE" for every number the table does not list.
QString symbologyName(int symbology);

} // namespace collect
