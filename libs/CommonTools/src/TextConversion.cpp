#include "XQInterface.h"

#include <QTextCodec>

#include <cstring>

QString XQInterface::char2QString(const char* bytes, int maxLength, const char* codecName)
{
    if (!bytes || maxLength <= 0)
        return QString();
    // Device texts are fixed-size fields that need not be NUL-terminated.
    const void* nul = std::memchr(bytes, '\0', static_cast<size_t>(maxLength));
    const int length = nul ? static_cast<int>(static_cast<const char*>(nul) - bytes) : maxLength;
    QTextCodec* codec = codecName ? QTextCodec::codecForName(codecName) : nullptr;
    if (!codec)
        codec = QTextCodec::codecForName("UTF-8");
    return codec->toUnicode(bytes, length);
}

QString XQInterface::uchar2QString(const unsigned char* bytes, int maxLength, const char* codecName)
{
    return char2QString(reinterpret_cast<const char*>(bytes), maxLength, codecName);
}
