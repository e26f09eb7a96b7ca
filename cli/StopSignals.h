#pragma once
// SIGINT and SIGTERM as a Qt signal on the main thread, so that an
// interrupted collection stops its jobs and removes their files instead of
// leaving half a folder behind.

#include <QObject>

class QSocketNotifier;

namespace cli {

class StopSignals final : public QObject {
    Q_OBJECT
    Q_DISABLE_COPY(StopSignals)

public:
    explicit StopSignals(QObject* parent = nullptr);
    // Gives the two signals back their default handling.
    ~StopSignals() override;

signals:
    void requested(int nSignal);

private:
    void onReadable();

    QSocketNotifier* m_notifier = nullptr;
};

} // namespace cli
