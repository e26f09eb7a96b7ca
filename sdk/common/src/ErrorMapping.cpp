#include "ErrorMapping.h"

#include "XQSdkDefs.h"

#include <arv.h>

namespace xq {

int errorCodeOf(const GError* error)
{
    if (!error)
        return XQ_OK;
    if (error->domain == ARV_DEVICE_ERROR) {
        switch (error->code) {
        case ARV_DEVICE_ERROR_NOT_CONTROLLER:
        case ARV_DEVICE_ERROR_PROTOCOL_ERROR_ACCESS_DENIED:
        case ARV_DEVICE_ERROR_PROTOCOL_ERROR_WRITE_PROTECT:
        case ARV_DEVICE_ERROR_PROTOCOL_ERROR_BUSY:
            return XQ_ERR_ACCESS_DENIED;
        case ARV_DEVICE_ERROR_FEATURE_NOT_FOUND:
        case ARV_DEVICE_ERROR_WRONG_FEATURE:
        case ARV_DEVICE_ERROR_GENICAM_NOT_FOUND:
            return XQ_ERR_GENICAM;
        case ARV_DEVICE_ERROR_NOT_FOUND:
            return XQ_ERR_NOT_FOUND;
        case ARV_DEVICE_ERROR_NO_STREAM_CHANNEL:
            return XQ_ERR_NOT_SUPPORTED;
        default:
            return XQ_ERR_DEVICE_IO;
        }
    }
    if (error->domain == ARV_GC_ERROR)
        return XQ_ERR_GENICAM;
    return XQ_ERR_DEVICE_IO;
}

} // namespace xq
