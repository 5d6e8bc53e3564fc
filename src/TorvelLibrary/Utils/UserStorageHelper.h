#pragma once

#include "TorvelPlatform/defaults/PropertyValue.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace torvel {

// The library's one door to persistent values: every value goes into an encrypted store (SecureDefaults).
//
//   UserStorageHelper::save("254700000000", "msisdn");
//   const std::optional<std::string> msisdn = UserStorageHelper::string("msisdn");
//
// The store of a call is the suite that it names, else the default suite, else the shared store; an empty
// name is none. A store's key is created, from a random identifier, when the store is first opened. Nothing
// is told of a failure but through the store's damage handler and the log: writers do nothing then, readers
// give an absent result. Any thread, but for `initialSetup`, which is for
// the main thread.
class UserStorageHelper {
  public:
    // The name of a suite; absent for the default one.
    using Suite = std::optional<std::string_view>;

    // Sets the default suite; absent: none. May be called again. Opens the store chosen, so that its key
    // exists.
    static void initialSetup(const Suite& suiteName);
    // Both are on disk when they return.
    static void remove(std::string_view forKey, const Suite& inSuite = {});
    // Removes all values of a domain (a suite's name, or the host's identifier for the shared store),
    // whatever the default suite is.
    static void clearAll(std::string_view forDomain);

    // Writes a text, an integer, a single- or double-precision number, a Boolean, a URL, data, a date, an
    // array or a dictionary; an absent value removes the key. On disk when it returns: not for tight loops.
    static void save(const std::optional<PropertyValue>& value, std::string_view forKey,
                     const Suite& inSuite = {});

    // Absent when there is no value, or one that is not of this kind; `string` also gives numbers as texts
    // and `url` the file URLs of paths, by the conversions of PropertyValue.
    static std::optional<std::string> string(std::string_view forKey, const Suite& inSuite = {});
    static std::optional<std::vector<std::string>> stringArray(std::string_view forKey,
                                                               const Suite& inSuite = {});
    static std::optional<PropertyValue::Array> array(std::string_view forKey, const Suite& inSuite = {});
    static std::optional<PropertyValue::Dictionary> dictionary(std::string_view forKey,
                                                               const Suite& inSuite = {});
    static std::optional<Data> data(std::string_view forKey, const Suite& inSuite = {});
    static std::optional<PropertyValue> object(std::string_view forKey, const Suite& inSuite = {});
    static std::optional<URL> url(std::string_view forKey, const Suite& inSuite = {});

    // Zero or false, not absent, when there is no value or one that cannot be converted; absent only when the
    // store cannot be opened or the value cannot be relied on.
    static std::optional<std::int64_t> integer(std::string_view forKey, const Suite& inSuite = {});
    static std::optional<float> floatValue(std::string_view forKey, const Suite& inSuite = {});
    static std::optional<double> doubleValue(std::string_view forKey, const Suite& inSuite = {});
    static std::optional<bool> boolValue(std::string_view forKey, const Suite& inSuite = {});
};

}  // namespace torvel
