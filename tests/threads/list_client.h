// One user of a list, with a store key, a hive and list objects of its own, as a thread or a process has them.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "addrlist/addr_list.h"
#include "addrlist/addr_list_hive.h"
#include "zxpolicy.h"

namespace threads {

using Addresses = std::vector<std::string>;

// Each throws Failure, with what failed and its code.
struct Failure {
    std::string what;
    int code;
};

inline void check(int code, const char* what) {
    if (code < 0) throw Failure{what, code};
}

// An array as the interface takes it.
inline std::vector<const char*> arrayOf(const Addresses& addresses) {
    std::vector<const char*> texts;
    for (const std::string& address : addresses)
        texts.push_back(address.c_str());
    texts.push_back(nullptr);
    return texts;
}

class ListClient {
public:
    ListClient(const std::string& location, const std::string& list);
    ~ListClient();
    ListClient(const ListClient&) = delete;
    ListClient& operator=(const ListClient&) = delete;

    void create();
    void remove();  // deletes the list
    void open();    // once more, if it is open
    void close();

    void insert(const Addresses& addresses);
    // False when some were not there.
    bool erase(const Addresses& addresses);
    void import(const std::string& path, bool isReplacing);

    // As the open list answers.
    bool matches(const std::string& address) const;
    uint32_t weight(const std::string& address) const;
    Addresses entries() const;

    // What the values of the list hold, in the order of their numbers.
    Addresses storedEntries() const;

private:
    _ZxPolComHandle* _store = nullptr;
    std::unique_ptr<ZxPolAddrListHive> _hive;
    std::unique_ptr<ZxPolAddrList> _list;
    const std::string _name;
};

// A file with one address a line, gone with the object.
class AddressFile {
public:
    explicit AddressFile(const Addresses& addresses);
    ~AddressFile();
    AddressFile(const AddressFile&) = delete;
    AddressFile& operator=(const AddressFile&) = delete;
    const std::string& path() const { return _path; }

private:
    std::string _path;
};

// Addresses prefix0@end, prefix1@end, ...
Addresses numbered(const std::string& prefix, size_t count, const std::string& end = "@example.com");

}  // namespace threads
