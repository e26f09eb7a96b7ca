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

QByteArray csvRowOf(quint32 frameNumber, XQ_CODEREADER_FRAME_INFO& frame)
{
    if (frame.nCodeNum > kMaxCodesPerRow)
        frame.nCodeNum = kMaxCodesPerRow;

    // TriggerIndex is always 1; PicPath is the bare file name. Joined, not
    // filled in with arg(): a "%1" in a code text must stay text.
    const QString number = QString::number(frameNumber);
    QString row = QStringLiteral("1,") + number + QLatin1Char(',') + number + QStringLiteral(".jpg");
    for (unsigned int i = 0; i < frame.nCodeNum; ++i) {
        const XQ_CODEREADER_CODE_INFO& code = frame.stCodeInfo[i];
        const QString text = QString::fromUtf8(code.chCode, static_cast<int>(strnlen(code.chCode, sizeof code.chCode)));
        row += QLatin1Char(',') + text + QLatin1Char(',') + symbologyName(code.nSymbology) + QLatin1Char(',');
        for (int p = 0; p < 4; ++p) {
            row += QString::number(code.stCornerPt[p].nX) + QLatin1Char('.') + QString::number(code.stCornerPt[p].nY);
            if (p < 3)
                row += QLatin1Char('.');
        }
    }
    row += QStringLiteral("\r\n");
    return row.toUtf8();
}

} // namespace collect
