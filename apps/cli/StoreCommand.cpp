#include "TorvelPlatform/defaults/SecureDefaults.h"
#include "TorvelPlatform/foundation/Bundle.h"
#include "TorvelPlatform/foundation/DateFormatter.h"
#include "TorvelPlatform/foundation/UUID.h"
#include "cli/Command.h"
#include "cli/Output.h"

#include <algorithm>

namespace torvel::cli {
namespace {

constexpr Option options[] = {
    {"ACTION", "", "list, get, set, remove, clear, verify or accept", Occurs::once},
    {"KEY", "", "the entry's name, for get, set and remove"},
    {"VALUE", "", "the text to keep, for set"},
    {"--host", "ID", "whose store: the identifier of a host (torvel)"},
    {"--suite", "NAME", "the suite; the host's own store by default"},
    {"--secret-service", "", "the key lies in the desktop's Secret Service, not in a file"},
    {"--show", "", "print values, not only names and kinds"},
};

constexpr std::string_view kindNames[] = {"Boolean", "integer", "float", "double", "text",
                                          "data",    "date",    "URL",   "array",  "dictionary"};
static_assert(std::size(kindNames) == std::variant_size_v<PropertyValue::Kinds>);

// A value on one line, as well as one line can.
std::string shown(const PropertyValue& value) {
    if (const auto text = value.stringValue()) return *text;
    if (const auto url = value.urlValue()) return url->absoluteString();
    if (const auto* const data = value.as<Data>()) return std::to_string(data->size()) + " bytes";
    if (const auto* const date = value.as<PropertyValue::Date>())
        return DateFormatter("yyyy-MM-dd HH:mm:ss.SSS").string(*date);
    std::string text;
    if (const auto* const array = value.as<PropertyValue::Array>()) {
        for (const PropertyValue& element : *array)
            text.append(text.empty() ? "[" : ", ").append(shown(element));
        return text.append(text.empty() ? "[]" : "]");
    }
    for (const auto& [key, element] : *value.as<PropertyValue::Dictionary>())
        text.append(text.empty() ? "{" : ", ").append(key).append(": ").append(shown(element));
    return text.append(text.empty() ? "{}" : "}");
}

std::string line(std::string key, const PropertyValue& value, bool isShown) {
    key.append("\t").append(kindNames[value.kinds().index()]);
    if (isShown) key.append("\t").append(shown(value));
    return key.append("\n");
}

// An action on the store that the command line names.
struct StoreCall {
    const Arguments& arguments;
    SecureDefaults store;
    std::string key, value;

    int failed(StoreStatus status) const { return arguments.failed(std::string(describe(status))); }
    int done(StoreStatus status) const { return status == StoreStatus::ok ? exitOk : failed(status); }
};

int list(const StoreCall& call) {
    const StoreStatus status = call.store.status();
    if (status != StoreStatus::ok && status != StoreStatus::noKey && status != StoreStatus::damaged)
        return call.failed(status);
    std::string lines;
    for (const std::string& key : call.store.keys()) {
        if (const auto value = call.store.object(key))
            lines += line(key, *value, call.arguments.has("--show"));
    }
    if (const int exit = deliver(lines); exit != exitOk) return exit;
    return status == StoreStatus::damaged ? call.failed(status) : exitOk;
}

int get(const StoreCall& call) {
    const auto outcome = call.store.read(call.key);
    if (!outcome) return call.failed(outcome.error());
    if (!outcome.value()) return call.arguments.failed("there is no entry " + call.key);
    return deliver(line(call.key, *outcome.value(), call.arguments.has("--show")));
}

int set(const StoreCall& call) {
    const bool lacksKey = !call.store.isKeyCreated();
    const StoreStatus made = lacksKey ? call.store.setPassword(randomUUIDString()) : StoreStatus::ok;
    return call.done(made == StoreStatus::ok ? call.store.set(call.key, call.value) : made);
}

int remove(const StoreCall& call) {
    return call.store.isKeyCreated() ? call.done(call.store.remove(call.key)) : exitOk;
}

int clear(const StoreCall& call) {
    const std::string domain = call.arguments.text("--suite", Bundle::main().identifier());
    return call.done(SecureDefaults::removePersistentDomain(domain));
}

int verify(const StoreCall& call) {
    const StoreReport report = call.store.verify();
    std::string lines = std::to_string(report.readable) + " entries can be read\n";
    for (const std::string& finding : report.findings) lines += finding + "\n";
    if (const int exit = deliver(lines); exit != exitOk) return exit;
    return call.done(report.status);
}

int accept(const StoreCall& call) { return call.done(call.store.acceptRestored()); }

struct Action {
    std::string_view name;
    bool takesKey, takesValue;
    int (*run)(const StoreCall& call);
};

constexpr Action actions[] = {
    {"list", false, false, list},     {"get", true, false, get},      {"set", true, true, set},
    {"remove", true, false, remove},  {"clear", false, false, clear}, {"verify", false, false, verify},
    {"accept", false, false, accept},
};

int store(const Arguments& arguments) {
    const std::string name = arguments.text("ACTION", "");
    const auto* const action = std::ranges::find(actions, std::string_view(name), &Action::name);
    if (action == std::end(actions)) return arguments.misused("there is no action '" + name + "'");
    if (arguments.has("KEY") != action->takesKey || arguments.has("VALUE") != action->takesValue)
        return arguments.misused(name + (action->takesValue ? " takes a KEY and a VALUE"
                                         : action->takesKey ? " takes a KEY"
                                                            : " takes no KEY"));
    Bundle::setMain(Bundle::main().directory(), arguments.text("--host", "torvel"));
    if (arguments.has("--secret-service"))
        SecureDefaults::setKeyPlace(SecureDefaults::KeyPlace::secretService);
    const std::optional<std::string> suite = arguments.text("--suite");
    const auto chosen = suite ? SecureDefaults::suite(*suite) : SecureDefaults::shared();
    if (!chosen) return arguments.misused("--suite: this is the name of no suite");
    return action->run({arguments, *chosen, arguments.text("KEY", ""), arguments.text("VALUE", "")});
}

}  // namespace

const Command storeCommand = {
    "store",
    "looks into a host's encrypted store, for developers",
    "Works on the stores of this user ($XDG_DATA_HOME, keys in $XDG_STATE_HOME). Prints names and kinds;\n"
    "values only with --show. 'accept' takes a backup that was put back for the newest data. For "
    "instance:\n\n"
    "  torvel store set language en --suite settings\n"
    "  torvel store list --suite settings --show",
    options,
    store,
};

}  // namespace torvel::cli
