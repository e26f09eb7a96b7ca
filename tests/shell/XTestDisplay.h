#pragma once
// The test's own X server (run-test --xvfb starts it) and the few questions
// a test asks it: which top-level windows exist, what they are called, which
// one has the focus.

#include <QList>
#include <QString>

// Xlib's macros clash with Qt's headers: only the .cpp includes it.
struct _XDisplay;
using XWindowId = unsigned long;

class XTestDisplay final
{
public:
    XTestDisplay() = default;
    ~XTestDisplay();
    Q_DISABLE_COPY(XTestDisplay)

    // Connects to $DISPLAY; false with errorText() set when it cannot.
    bool open();
    QString errorText() const { return m_error; }
    QString name() const { return m_strName; } // ":N"

    // The mapped top-level windows whose titles contain the text.
    QList<XWindowId> windowsTitled(const QString& titlePart) const;
    QString title(XWindowId window) const;

    // The top-level window that holds the keyboard focus, 0 when none.
    XWindowId focusedTopLevel() const;

    // Maps a plain window of our own and gives it the focus.
    XWindowId showDecoyWithFocus();

    void destroyWindow(XWindowId window) const;

private:
    _XDisplay* m_pDisplay = nullptr;
    QString m_strName;
    QString m_error;
};
