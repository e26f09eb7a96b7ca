#pragma once
// Where quorvex-cli's own output goes. The engine and the SDKs print
// progress chatter with printf; that must never mix into a table or a JSON
// document a script reads, so the command's results get their own
// descriptor and descriptor 1 is pointed at /dev/null.

#include <QString>

class QJsonObject;

namespace cli {

class Console final {
public:
    // outFd receives results, errFd messages; neither is closed here.
    Console(int outFd, int errFd);

    void out(const QString& text) const;
    void err(const QString& text) const;
    // One compact JSON document and a newline on the results descriptor.
    void json(const QJsonObject& document) const;

    bool outIsTerminal() const { return m_outIsTerminal; }
    // Columns of the results terminal; 80 when unknown.
    int columns() const;

private:
    int m_outFd;
    int m_errFd;
    bool m_outIsTerminal;
};

// Duplicates standard output to a new descriptor for the results and points
// descriptor 1 at /dev/null. Returns the new descriptor, or 1 when that
// cannot be done (the chatter then stays where it was).
int takeStandardOutput();

// A text from a device or a file, safe to show on a terminal: control
// characters become \xNN escapes, so a hostile name cannot move the cursor
// or forge lines.
QString printable(const QString& text);

} // namespace cli
