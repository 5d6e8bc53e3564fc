#include "Fuzz.h"
#include "TorvelPlatform/defaults/SealedEntry.h"
#include "TorvelPlatform/defaults/SecureDefaults.h"
#include "TorvelTesting/StoreFolder.h"

using namespace torvel;

// Every three bytes say where a byte of the store's database or log changes, and how. A value is still the
// one that was written, or there is a reason.
void fuzz(std::string_view bytes) {
    static const StoreSealer sealer{RootKey(), StoreID()};
    mustHold(!sealer.open(bytes, bytes) && !sealer.openSummary(bytes));
    static testing::StoreFolder folder;
    const SecureDefaults store = SecureDefaults::shared();
    static const bool isFilled = store.setPassword("p") == StoreStatus::ok &&
                                 store.set("a", "first") == StoreStatus::ok && folder.keep();
    mustHold(isFilled);
    folder.restore(bytes);
    store.verify();
    const auto outcome = store.read("a");
    mustHold(!outcome || outcome.value() == PropertyValue("first"));
}
