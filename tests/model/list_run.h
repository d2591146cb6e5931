// A sequence done on the library and on the model at once.
#pragma once

#include <memory>
#include <string>

#include "addrlist/addr_list.h"
#include "addrlist/addr_list_hive.h"
#include "addrlist/normal_addr_list.h"
#include "model/sequence.h"
#include "support/raw_store.h"

namespace model {

class ListRun {
public:
    // Creates the list in the store, which holds no list of the name.
    explicit ListRun(_ZxPolComHandle* store);
    // Deletes it.
    ~ListRun();
    ListRun(const ListRun&) = delete;
    ListRun& operator=(const ListRun&) = delete;

    // Does a step. Returns what differs, or nothing.
    std::string run(const Step& step);

private:
    void open(size_t object);
    void openAll();
    void create();
    void remove();
    int change(const Step& step);
    int import(const Step& step, _ZxPolComHandle* list) const;
    int changeModel(const Step& step);
    void overwrite(const Step& step) const;
    void reopenStale(const Step& step);
    void refresh();

    std::string compareValues() const;
    std::string compareOrders() const;
    std::string compareOrder(const char* order, _ZxPolComHandle* list) const;
    std::string comparePlace(uint32_t index, const char* order, _ZxPolComHandle* list) const;
    std::string compareMatches(const Addresses& subjects) const;
    std::string compareMatch(const std::string& subject, ZxPolMatchWeightType kind) const;
    std::string compareDeciding(const std::string& subject, ZxPolMatchWeightType kind) const;
    bool isDeciding(const std::string& entry, const std::string& subject, bool isMatch, uint32_t weight,
                    ZxPolMatchWeightType kind) const;

    _ZxPolComHandle* const _store;
    zxtest::Handle _flatHive;
    std::unique_ptr<ZxPolAddrListHive> _hive;
    zxtest::Handle _lists[2];
    std::unique_ptr<ZxPolAddrList> _matcher;
    ListModel _model;
    bool _isStale = false;  // the store has been changed behind the list's back
};

// Does all of a sequence in a list of its own. Returns the first difference and the number of its step, or nothing.
std::string runSequence(_ZxPolComHandle* store, const Sequence& sequence);

// The least that still differs, found by leaving out steps, addresses and subjects.
Sequence shrunk(_ZxPolComHandle* store, Sequence sequence);

}  // namespace model
