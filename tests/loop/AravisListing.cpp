#include "AravisListing.h"

extern "C" {
#include <arv.h>
}

std::vector<std::string> SerialNumbersFromAravis()
{
    arv_update_device_list();
    std::vector<std::string> serials;
    const unsigned int count = arv_get_n_devices();
    for (unsigned int i = 0; i < count; ++i) {
        const char* serial = arv_get_device_serial_nbr(i);
        serials.emplace_back(serial != nullptr ? serial : "");
    }
    return serials;
}
