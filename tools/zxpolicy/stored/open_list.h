// The address lists of a store, open by the library's classes, which tell more than the flat interface.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "addrlist/addr_list_hive.h"
#include "addrlist/normal_addr_list.h"
#include "stored/list_store_reader.h"
#include "stored/store.h"

namespace tool {

class ListHive {
public:
    // Throws a ToolError, also when the store holds no policy.
    explicit ListHive(const Store& store);

    std::vector<std::string> names() const;
    bool has(const std::string& name) const;

    // Throws a PolicyError "there is no address list", with `advice` on what to do, when there is none.
    std::unique_ptr<ZxPolAddrList> open(const std::string& name,
                                        const std::string& advice = "zxpolicy list shows those that there are") const;
    // The same for a list whose addresses are in the store. Throws a PolicyError for a list of another kind.
    std::unique_ptr<ZxPolNormalAddrList> openNormal(const std::string& name, const std::string& advice) const;
    std::unique_ptr<ZxPolNormalAddrList> openNormal(const std::string& name) const;

    // Creates an empty list.
    void create(const std::string& name) const;

private:
    const Store& _store;
    ListHiveHandle _handle;
    std::unique_ptr<ZxPolAddrListHive> _hive;
};

// The list's addresses, for readAddresses and countAddresses.
EnumerateAddress enumerationOf(ZxPolAddrList& list);

}  // namespace tool
