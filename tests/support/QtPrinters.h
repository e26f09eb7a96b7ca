#pragma once
// Lets GoogleTest print Qt values readably in failure messages.

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <ostream>

inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QByteArray& bytes, std::ostream* out)
{
    *out << '"' << bytes.toStdString() << '"';
}

inline void PrintTo(const QStringList& list, std::ostream* out)
{
    *out << '{';
    for (int i = 0; i < list.size(); ++i)
        *out << (i ? ", " : "") << '"' << list.at(i).toStdString() << '"';
    *out << '}';
}
