#include "AravisDescription.h"

extern "C" {
#include <arv.h>
}

std::string DescriptionFromAravis(const std::string& deviceAddress)
{
    GInetAddress* const local = g_inet_address_new_from_string("127.0.0.1");
    GInetAddress* const remote = g_inet_address_new_from_string(deviceAddress.c_str());
    GError* error = nullptr;
    ArvDevice* const device = remote != nullptr ? arv_gv_device_new(local, remote, &error) : nullptr;
    g_object_unref(local);
    if (remote != nullptr)
        g_object_unref(remote);
    if (device == nullptr) {
        if (error != nullptr)
            g_error_free(error);
        return {};
    }
    size_t size = 0;
    const char* const xml = arv_device_get_genicam_xml(device, &size);
    std::string bytes = xml != nullptr ? std::string(xml, size) : std::string();
    g_object_unref(device);
    return bytes;
}

std::vector<std::string> SerialNumbersFromAravis()
{
    arv_update_device_list();
    std::vector<std::string> serials;
    for (unsigned int i = 0; i < arv_get_n_devices(); ++i) {
        const char* serial = arv_get_device_serial_nbr(i);
        serials.emplace_back(serial != nullptr ? serial : "");
    }
    return serials;
}
