// Updates: writes of one operation that become durable together, where the host's store offers that.
#pragma once

#include <type_traits>
#include <utility>

#include "store/result.h"
#include "zxpolicy.h"

namespace zxpol {

// Whether the host's store offers updates, and so keeps others from writing while one is open.
bool canUpdate();

// One update of the store that `key` belongs to, open as long as the object lives. Ended normally also
// when the operation failed: what it wrote before the failure stays. A failure to end the update
// replaces the operation's result, as nothing of it was kept then.
class Update {
public:
    // *error becomes the store's failure when the update cannot be opened; the operation must not run.
    Update(_ZxPolComHandle* key, int* error);
    ~Update();
    Update(const Update&) = delete;
    Update& operator=(const Update&) = delete;

    explicit operator bool() const { return _mayRun; }

    // Ends the update now. False when nothing of it was kept; *error says why.
    bool end();

private:
    _ZxPolComHandle* _key;
    int* _error;
    bool _isOpen = false;
    bool _mayRun = true;
};

// Runs `body` as one update. Returns what it returned, or an empty result when the update could not be
// opened or ended.
template <class Body>
auto inUpdate(_ZxPolComHandle* key, int* error, Body body) -> decltype(body()) {
    using Result = decltype(body());
    if constexpr (std::is_void_v<Result>) {
        Update update(key, error);
        if (update) body();
    } else {
        Result result{};
        int before = ZXPOL_S_OK;
        {
            Update update(key, error);
            if (!update) return result;
            result = body();
            before = *error;
        }
        if (succeeded(before) && failed(*error)) return Result{};
        return result;
    }
}

}  // namespace zxpol
