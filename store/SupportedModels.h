#pragma once
// The code reader models the store knows, with the firmware version text a
// virtual camera of that model reports.

#include <QMap>
#include <QString>

namespace VirtualStore {

class SupportedModelTable final {
public:
    // Filled with the fixed rows.
    SupportedModelTable();

    // The version text for a model. A model without a row yields "" and
    // gains a row with an empty version, as a map's operator[] would.
    QString versionFor(const QString& strModel);

    int size() const { return m_versions.size(); }
    const QMap<QString, QString>& rows() const { return m_versions; }

private:
    QMap<QString, QString> m_versions;
};

// The table of the running program, filled at first use.
SupportedModelTable& supportedModels();

} // namespace VirtualStore
