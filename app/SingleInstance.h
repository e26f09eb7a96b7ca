#pragma once
// One copy of the tool per user. The first copy holds a lock and listens on
// a local socket; a later copy finds the lock, asks the first to come to the
// front (and to switch language when started with "CH" or "ENG"), and ends.

#include <QString>
#include <QStringList>

// True when another copy runs and has been asked to come forward; false when
// this process is now the first copy.
bool isAlreadyRunning(const QStringList& arguments = QStringList());

// Releases what the first copy holds; called by main after the event loop.
void closeInstanceGuard();
