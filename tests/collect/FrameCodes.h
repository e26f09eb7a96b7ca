#pragma once
// Reads the codes in a stored JPEG frame independently of the code-reader
// SDK, to check what a collection wrote about it.

#include <QByteArray>
#include <QString>
#include <QVector>

struct FrameCode final {
    QString text;
    QString typeName; // as the tool's symbology table names it
    int corners[8] = {};
};

// Decodes the JPEG at path; false when it is not a readable JPEG.
bool DecodeFrameCodes(const QString& path, QVector<FrameCode>* codes);

// A JPEG as grey pixels, one byte each, row after row.
struct GreyImage final {
    int width = 0;
    int height = 0;
    QByteArray pixels;
};
bool DecodeGreyJpeg(const QByteArray& jpeg, GreyImage* image);

// One data row of ImportInformation.csv, split back into its columns.
struct CsvRow final {
    QString triggerIndex;
    QString frameNumber;
    QString picturePath;
    QVector<FrameCode> codes;
};
// False when the row does not have 3 + 3n columns with eight coordinates.
bool ParseCsvRow(const QString& row, CsvRow* parsed);
