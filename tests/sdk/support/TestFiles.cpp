// Files and pictures for the SDK tests; apart from the device helpers, so
// that tests of the SDKs' inner pieces link without the C interfaces.
#include "SdkTestHelpers.h"

#include <turbojpeg.h>

#include <fstream>
#include <sstream>

namespace xqtest {

TemporaryFolder::TemporaryFolder()
{
    char pattern[] = "/tmp/xq-sdk-test-XXXXXX";
    const char* made = ::mkdtemp(pattern);
    m_path = made ? made : "";
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    if (!m_path.empty())
        std::filesystem::remove_all(m_path, ignored);
}

std::string readFile(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    std::ostringstream content;
    content << in.rdbuf();
    return content.str();
}

bool jpegSize(const unsigned char* data, std::size_t size, int& width, int& height, std::vector<std::uint8_t>* grey)
{
    tjhandle decompressor = tjInitDecompress();
    int subsampling = 0;
    int colourspace = 0;
    bool ok = tjDecompressHeader3(decompressor, data, size, &width, &height, &subsampling, &colourspace) == 0;
    if (ok) {
        std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width) * height);
        ok = tjDecompress2(decompressor, data, size, pixels.data(), width, 0, height, TJPF_GRAY, 0) == 0;
        if (ok && grey)
            *grey = std::move(pixels);
    }
    tjDestroy(decompressor);
    return ok;
}

} // namespace xqtest
