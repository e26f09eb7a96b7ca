#include "CaptureCsv.h"

#include "Symbology.h"

#include <QString>

#include <cstring>

namespace collect {

const char kCsvHeader[] =
    "TriggerIndex,FrameNum,PicPath,"
    "Code1,CodeType1,CodeCoordinate1,Code2,CodeType2,CodeCoordinate2,"
    "Code3,CodeType3,CodeCoordinate3,Code4,CodeType4,CodeCoordinate4,"
    "Code5,CodeType5,CodeCoordinate5,Code6,CodeType6,CodeCoordinate6\n";

QByteArray CsvRowOf(quint32 frameNumber, XQ_CODEREADER_FRAME_INFO& frame)
{
    if (frame.nCodeNum > kMaxCodesPerRow)
        frame.nCodeNum = kMaxCodesPerRow;

    // TriggerIndex is always 1; PicPath is the bare file name.
    QString row = QStringLiteral("%1,%2,%3.jpg").arg(1).arg(frameNumber).arg(frameNumber);
    for (unsigned int i = 0; i < frame.nCodeNum; ++i) {
        const XQ_CODEREADER_CODE_INFO& code = frame.stCodeInfo[i];
        const QString text = QString::fromUtf8(code.chCode, static_cast<int>(strnlen(code.chCode, sizeof code.chCode)));
        const XQ_CODEREADER_POINT* corner = code.stCornerPt;
        row = QStringLiteral("%1,%2,%3,%4.%5.%6.%7.%8.%9.%10.%11")
                  .arg(row)
                  .arg(text)
                  .arg(SymbologyName(code.nSymbology))
                  .arg(corner[0].nX)
                  .arg(corner[0].nY)
                  .arg(corner[1].nX)
                  .arg(corner[1].nY)
                  .arg(corner[2].nX)
                  .arg(corner[2].nY)
                  .arg(corner[3].nX)
                  .arg(corner[3].nY);
    }
    row += QStringLiteral("\r\n");
    return row.toUtf8();
}

} // namespace collect
