#include "TorvelPlatform/defaults/StoreStatus.h"

namespace torvel {

std::string_view describe(StoreStatus status) {
    switch (status) {
        case StoreStatus::ok:
            return "all is well";
        case StoreStatus::noKey:
            return "no key has been created yet";
        case StoreStatus::keyMissing:
            return "the key is missing, though there is data";
        case StoreStatus::keyUnsafe:
            return "the key file is a link, of another user, or open to others";
        case StoreStatus::keyServiceFailed:
            return "the desktop's Secret Service is absent, locked or refuses the key";
        case StoreStatus::keyDamaged:
            return "the key is damaged";
        case StoreStatus::keyMismatch:
            return "the key is not that of the data";
        case StoreStatus::damaged:
            return "data is damaged or has been tampered with";
        case StoreStatus::rolledBack:
            return "the data is older than what was last written, or gone";
        case StoreStatus::newerFormat:
            return "the data was written by a newer version";
        case StoreStatus::networkFileSystem:
            return "its place is a network file system, where locks cannot be relied on";
        case StoreStatus::readOnly:
            return "its place cannot be written to";
        case StoreStatus::diskFull:
            return "the disk is full";
        case StoreStatus::busy:
            return "other processes keep it locked";
        case StoreStatus::invalidValue:
            return "the value is nested too deep or too large";
        case StoreStatus::unavailable:
            return "the system failed";
    }
    return "";
}

}  // namespace torvel
