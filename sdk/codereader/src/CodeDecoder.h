// Finds the codes in a frame with ZXing-cpp and reports them with the tool's
// symbology numbers.
#pragma once

#include "FrameImage.h"
#include "XqCodeReaderCtrl.h"

#include <string>
#include <vector>

namespace xq {

struct DecodedCode {
    std::string text;    // UTF-8
    int symbology = XQ_SYMBOLOGY_UNKNOWN;
    XQ_CODEREADER_POINT corners[4]{};
};

struct DecodeSettings {
    unsigned int formats = XQ_FORMAT_DEFAULT; // XQ_FORMAT_* mask
    bool tryHarder = false;
    unsigned int maxCodes = XQ_CODEREADER_MAX_CODE_NUM;
};

std::vector<DecodedCode> decodeCodes(const FrameImage& image, const DecodeSettings& settings);

} // namespace xq
