#pragma once
// One copy of the tool per user. The first copy holds a lock and listens on
// a local socket, both in the user's runtime folder; a later copy finds the
// lock, asks the first to come to the front (and to switch language when
// started with "CH" or "ENG"), and ends.

#include <QString>
#include <QStringList>

class QWidget;

// True when another copy runs and has been asked to come forward; false when
// this process is now the first copy. Needs the application object.
bool isAlreadyRunning(const QStringList& arguments = QStringList());

// Releases what the first copy holds; called by main after the event loop.
void closeInstanceGuard();

// Where the lock and the socket live: the user's runtime folder.
QString instanceLockPath();
QString instanceSocketPath();

// The first copy's window: a top-level window titled in Chinese, else one
// titled in English, as the window's translated title reads; null if none.
QWidget* findInstanceWindow();

// Restores the window when minimised, shows, raises and activates it.
void bringWindowToFront(QWidget* window);
