#include "SupportedModels.h"

#include <utility>

namespace VirtualStore {

namespace {

// Model name and the firmware version a virtual camera of it reports.
// QVX-ID2040M, -ID3160C, -ID5120M and -ID7200X are the simulator's demo
// code readers, with the versions they report.
const std::pair<const char*, const char*> kModelRows[] = {
    {"QVX-ID1003M", "V1.2.3.R 220415"},  {"QVX-ID1005M", "V1.2.3.R 220415"},
    {"QVX-ID1005C", "V1.2.3.R 220415"},  {"QVX-ID1203M", "V1.4.0.R 221130"},
    {"QVX-ID1205M", "V1.4.0.R 221130"},  {"QVX-ID1205C", "V1.4.0.R 221130"},
    {"QVX-ID1213M", "V1.4.0.R 221130"},  {"QVX-ID2013M", "V2.0.1.R 230308"},
    {"QVX-ID2020M", "V2.0.1.R 230308"},  {"QVX-ID2020C", "V2.0.1.R 230308"},
    {"QVX-ID2113M", "V2.1.0.R 230712"},  {"QVX-ID2120M", "V2.1.0.R 230712"},
    {"QVX-ID2120C", "V2.1.0.R 230712"},  {"QVX-ID5120M", "V2.9.7.R 231120"},
    {"QVX-ID5120C", "V2.9.7.R 231120"},  {"QVX-ID5050M", "V2.9.7.R 231120"},
    {"QVX-ID5050C", "V2.9.7.R 231120"},  {"QVX-ID2040M", "V3.2.1.R 240315"},
    {"QVX-ID2040C", "V3.2.1.R 240315"},  {"QVX-ID2060M", "V3.2.1.R 240315"},
    {"QVX-ID3160C", "V3.4.0.R 240902"},  {"QVX-ID3160M", "V3.4.0.R 240902"},
    {"QVX-ID3120M", "V3.4.0.R 240902"},  {"QVX-ID3120C", "V3.4.0.R 240902"},
    {"QVX-ID3250M", "V3.6.0.R 241205"},  {"QVX-ID3250C", "V3.6.0.R 241205"},
    {"QVX-ID3500M", "V3.6.0.R 241205"},  {"QVX-ID7200X", "V4.0.2.R 250110"},
    {"QVX-ID7200M", "V4.0.2.R 250110"},  {"QVX-ID7120M", "V4.0.2.R 250110"},
    {"QVX-ID7250M", "V4.1.1.R 250318"},  {"QVX-ID7500M", "V4.1.1.R 250318"},
    {"QVX-ID9005M", "V4.1.1.R 250318"},  {"QVX-ID9013M", "V4.2.0.R 250606"},
    {"QVX-ID9020M", "V4.2.0.R 250606"},  {"QVX-ID9020C", "V4.2.0.R 250606"},
    {"QVX-ID9050M", "V4.2.0.R 250606"},
};

} // namespace

SupportedModelTable::SupportedModelTable()
{
    for (const auto& [model, version] : kModelRows)
        m_versions.insert(QString::fromLatin1(model), QString::fromLatin1(version));
}

QString SupportedModelTable::versionFor(const QString& strModel)
{
    return m_versions[strModel];
}

SupportedModelTable& supportedModels()
{
    static SupportedModelTable table;
    return table;
}

} // namespace VirtualStore
