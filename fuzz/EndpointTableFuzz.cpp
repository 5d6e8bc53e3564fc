#include "Fuzz.h"
#include "TorvelLibrary/Data/Local/EndpointsHelper.h"

#include <sys/mman.h>
#include <unistd.h>

using namespace torvel;

void fuzz(std::string_view bytes) {
    const int file = ::memfd_create("EndpointsConfig.plist", MFD_CLOEXEC);
    mustHold(::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    EndpointsHelper helper;
    helper.setEndPointsPlist(URL::file("/proc/self/fd/" + std::to_string(file)));
    ::close(file);
    if (const auto table = helper.endpointsDict())
        for (const auto& [id, path] : *table) mustHold(table->find(id)->second == path);
}
