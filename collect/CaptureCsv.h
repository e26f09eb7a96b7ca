#pragma once
// ImportInformation.csv: one row per captured frame with up to six codes.
// The header ends in LF and the rows in CR LF; readers of the file expect
// exactly that.

#include "XqCodeReaderCtrl.h"

#include <QByteArray>

namespace collect {

constexpr int kMaxCodesPerRow = 6;

extern const char kCsvHeader[];

// The row of frame frameNumber as UTF-8 bytes, CR LF included. Cuts the
// frame's code count to six in place, as the row holds no more. Code texts go
// in unquoted and are substituted like every other field, so a comma in a
// code spreads it over two columns.
QByteArray csvRowOf(quint32 frameNumber, XQ_CODEREADER_FRAME_INFO& frame);

} // namespace collect
