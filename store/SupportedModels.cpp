#include "SupportedModels.h"

#include <utility>

namespace VirtualStore {

namespace {

// Model name and the firmware version a virtual camera of it reports. The
// two "-DEMO" rows are the simulator's demo code readers.
const std::pair<const char*, const char*> kModelRows[] = {
    {"QV-ID110-03M", "V1.2.3.R 220415"},  {"QV-ID110-05M", "V1.2.3.R 220415"},
    {"QV-ID130-03M", "V1.2.3.R 220415"},  {"QV-ID120-03M", "V1.4.0.R 221130"},
    {"QV-ID120-05M", "V1.4.0.R 221130"},  {"QV-ID120-05C", "V1.4.0.R 221130"},
    {"QV-ID130-05M", "V1.4.0.R 221130"},  {"QV-ID200-13M", "V2.0.1.R 230308"},
    {"QV-ID200-20M", "V2.0.1.R 230308"},  {"QV-ID220-13M", "V2.0.1.R 230308"},
    {"QV-ID210-13M", "V2.1.0.R 230712"},  {"QV-ID210-20M", "V2.1.0.R 230712"},
    {"QV-ID210-20C", "V2.1.0.R 230712"},  {"QV-ID300-12M", "V2.2.5.R 231020"},
    {"QV-ID300-50M", "V2.2.5.R 231020"},  {"QV-ID330-50M", "V2.2.5.R 231020"},
    {"QV-ID310-12M", "V3.0.0.R 240611"},  {"QV-ID310-50M", "V3.0.0.R 240611"},
    {"QV-ID320-05M", "V3.0.0.R 240611"},  {"QV-ID320-13M", "V3.0.0.R 240611"},
    {"QV-ID100-DEMO", "V3.0.0.R 240611"}, {"QV-ID200-DEMO", "V3.0.0.R 240611"},
    {"QV-ID500-20M", "V3.1.2.R 240903"},  {"QV-ID500-50M", "V3.1.2.R 240903"},
    {"QV-ID510-20M", "V3.1.2.R 240903"},  {"QV-ID510-50M", "V3.2.0.R 241205"},
    {"QV-ID520-120M", "V3.2.0.R 241205"}, {"QV-ID520-250M", "V3.2.0.R 241205"},
    {"QV-ID700-50M", "V4.0.0.R 250120"},  {"QV-ID700-120M", "V4.0.0.R 250120"},
    {"QV-ID710-50M", "V4.0.0.R 250120"},  {"QV-ID710-120M", "V4.1.1.R 250318"},
    {"QV-ID720-250M", "V4.1.1.R 250318"}, {"QV-ID900-05M", "V4.1.1.R 250318"},
    {"QV-ID900-13M", "V4.2.0.R 250606"},  {"QV-ID910-05M", "V4.2.0.R 250606"},
    {"QV-ID910-13M", "V4.2.0.R 250606"},
};

} // namespace

SupportedModelTable::SupportedModelTable()
{
    for (const auto& [model, version] : kModelRows)
        m_mapVersions.insert(QString::fromLatin1(model), QString::fromLatin1(version));
}

QString SupportedModelTable::VersionFor(const QString& strModel)
{
    return m_mapVersions[strModel];
}

SupportedModelTable& SupportedModels()
{
    static SupportedModelTable table;
    return table;
}

} // namespace VirtualStore
