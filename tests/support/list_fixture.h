// The fixture of tests about normal address lists: terse ways to change a list through the flat interface, and to
// look at what the store holds of it.
#pragma once

#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <map>

#include "support/policy_fixture.h"

namespace zxtest {

using Lines = std::vector<std::string>;

inline Lines operator+(Lines some, const Lines& others) {
    some.insert(some.end(), others.begin(), others.end());
    return some;
}

// A valid address of exactly `length` characters (at least 6) that begins with `letter`.
inline std::string sized(size_t length, char letter) {
    return std::string(length - 4, letter) + "@x.y";
}

// Sets the environment variable that names the order of enumeration, as long as it lives.
class EnumerationOrder {
public:
    explicit EnumerationOrder(const char* order) { setenv("order", order, 1); }
    ~EnumerationOrder() { unsetenv("order"); }
    EnumerationOrder(const EnumerationOrder&) = delete;
    EnumerationOrder& operator=(const EnumerationOrder&) = delete;
};

// An array of addresses as the interface takes it, closed by a null pointer.
class AddressArray {
public:
    explicit AddressArray(const Lines& addresses) : _addresses(addresses) {
        for (const std::string& address : _addresses)
            _array.push_back(address.c_str());
        _array.push_back(nullptr);
    }
    AddressArray(const AddressArray&) = delete;
    AddressArray& operator=(const AddressArray&) = delete;
    const char** get() { return _array.data(); }

private:
    const Lines _addresses;
    std::vector<const char*> _array;
};

// The bytes of a stored value that holds these addresses.
inline std::string imageOf(const Lines& addresses) {
    std::string image;
    for (const std::string& address : addresses)
        image += address + '\0';
    return image + '\0';
}

// The addresses in the bytes of a stored value.
inline Lines addressesIn(const std::string& image) {
    Lines found;
    for (size_t at = 0; at < image.size() && image[at] != '\0'; at += found.back().size() + 1)
        found.emplace_back(image.c_str() + at);
    return found;
}

class ListTest : public PolicyTest {
protected:
    void SetUp() override {
        unsetenv("order");
        PolicyTest::SetUp();
    }

    // ---- changing ------------------------------------------------------------------------------

    static _ZxPolAddrListAttr normalAttributes(const std::string& displayName = "") {
        _ZxPolAddrListAttr attr = {};
        setField(attr.displayName, displayName);
        attr.type = ZXPOL_ADDRLIST_NORMAL;
        return attr;
    }

    // Creates a list, or opens an existing one, and inserts these addresses.
    Handle create(const std::string& name = "L", const Lines& entries = {}) const {
        const _ZxPolAddrListAttr attr = normalAttributes(name);
        int error = ZXPOL_S_OK;
        Handle made(zxpol_createAddrList(listHive(), name.c_str(), &attr, &error));
        EXPECT_TRUE(made != nullptr) << name << ": " << codeText(error);
        if (!entries.empty()) {
            EXPECT_CODE(ZXPOL_S_OK, insert(made, entries));
        }
        return made;
    }

    Handle open(const std::string& name = "L") const {
        int error = ZXPOL_S_OK;
        Handle found(zxpol_openAddrList(listHive(), name.c_str(), &error));
        EXPECT_TRUE(found != nullptr) << name << ": " << codeText(error);
        return found;
    }

    int codeOfOpening(const std::string& name = "L") const {
        int error = ZXPOL_S_OK;
        const Handle found(zxpol_openAddrList(listHive(), name.c_str(), &error));
        EXPECT_EQ(error >= 0, found != nullptr);
        return error;
    }

    int deleteList(const std::string& name = "L") const {
        int error = ZXPOL_S_OK;
        zxpol_deleteAddrList(listHive(), name.c_str(), &error);
        return error;
    }

    static int insert(const Handle& list, const Lines& entries) {
        int error = ZXPOL_S_OK;
        zxpol_insertAddress(list.get(), AddressArray(entries).get(), &error);
        return error;
    }

    static int remove(const Handle& list, const Lines& entries) {
        int error = ZXPOL_S_OK;
        zxpol_removeAddress(list.get(), AddressArray(entries).get(), &error);
        return error;
    }

    static int import(const Handle& list, const std::string& path, uint32_t format = 0, uint32_t replace = 0) {
        int error = ZXPOL_S_OK;
        zxpol_importAddress(list.get(), format, replace, path.c_str(), &error);
        return error;
    }

    // ---- looking -------------------------------------------------------------------------------

    // The addresses that the list enumerates from index 0 to its end.
    static Lines addresses(const Handle& list) {
        Lines found;
        for (uint32_t index = 0;; ++index) {
            char buffer[ZXPOL_ADDRESS_SIZE];
            uint32_t size = sizeof buffer;
            int error = ZXPOL_S_OK;
            zxpol_enumAddress(list.get(), index, buffer, &size, &error);
            if (error < 0) {
                EXPECT_CODE(ZXPOL_E_NO_MORE_ITEMS, error);
                return found;
            }
            found.emplace_back(buffer);
            EXPECT_EQ(found.back().size() + 1, size);
        }
    }
    static Lines addresses(const Handle& list, const char* order) {
        const EnumerationOrder chosen(order);
        return addresses(list);
    }

    // The addresses that a list with the same values has, whose cache can only come from the store.
    Lines addressesInStore(const std::string& name = "L") const {
        const RawKey original = key(name);
        RawKey copy = raw("AddressList").makeKey(name + "Copy");
        for (const std::string& value : original.valueNames()) {
            uint32_t type = 0;
            const std::string data = original.bytes(value, &type).value_or("");
            copy.setBytes(value, type, data);
        }
        const Lines found = addresses(open(name + "Copy"));
        EXPECT_CODE(ZXPOL_S_OK, deleteList(name + "Copy"));
        return found;
    }

    RawKey key(const std::string& name = "L") const { return raw("AddressList\\" + name); }

    // The bytes of the list's address values by their names; other values are not looked at.
    std::map<std::string, std::string> images(const std::string& name = "L") const {
        const RawKey list = key(name);
        std::map<std::string, std::string> found;
        for (const std::string& value : list.valueNames()) {
            if (value.compare(0, 7, "address") != 0) continue;
            uint32_t type = ~0u;
            found[value] = list.bytes(value, &type).value_or("unreadable");
            EXPECT_EQ(ZXREG_MULTI_STRING, type) << value;
        }
        return found;
    }

    // The images of address1, address2, ... that hold these addresses.
    static std::map<std::string, std::string> imagesOf(const std::vector<Lines>& values) {
        std::map<std::string, std::string> all;
        for (const Lines& value : values)
            all["address" + std::to_string(all.size() + 1)] = imageOf(value);
        return all;
    }

    // Writes the images of address1, address2, ... of a new normal list behind the library's back.
    void store(const std::vector<Lines>& values, const std::string& name = "L") const {
        RawKey list = raw("AddressList").makeKey(name);
        list.setNumber("type", ZXPOL_ADDRLIST_NORMAL);
        for (const char* text : {"displayName", "comment"})
            list.setText(text, "");
        for (const auto& [value, image] : imagesOf(values))
            list.setBytes(value, ZXREG_MULTI_STRING, image);
    }
    using PolicyTest::store;

    // Whether a rule whose sender side names the list matches a mail of this sender.
    bool holds(const std::string& sender, const std::string& name = "L") const {
        if (!raw("Rule\\Mail").hasKey("rules\\uses" + name)) addRule("\\", "uses" + name, "(" + name + ")", "*");
        const Lines lines = matched(sender, {"r@x.example"});
        return std::find(lines.begin(), lines.end(), "\\uses" + name + ": r@x.example |") != lines.end();
    }
};

// A file that is gone with the test.
class TestFile {
public:
    explicit TestFile(const std::string& content = "") : _path(::testing::TempDir() + "zxpolicy-file-XXXXXX") {
        const int made = mkstemp(_path.data());
        EXPECT_NE(-1, made) << _path;
        if (made != -1) ::close(made);
        std::ofstream(_path, std::ios::binary) << content;
    }
    ~TestFile() { std::remove(_path.c_str()); }
    TestFile(const TestFile&) = delete;
    TestFile& operator=(const TestFile&) = delete;
    const std::string& path() const { return _path; }

private:
    std::string _path;
};

// With one open list, L, that holds old@b.c.
class ImportTest : public ListTest {
protected:
    void SetUp() override {
        ListTest::SetUp();
        if (!HasFatalFailure()) _list = create("L", {"old@b.c"});
    }
    void TearDown() override {
        _list.reset();
        ListTest::TearDown();
    }

    // Imports a file of this content in place of what the list holds.
    int importing(const std::string& content, uint32_t format = 0) const {
        return import(_list, TestFile(content).path(), format, 1);
    }

    // The addresses of the list, which must be the stored ones.
    Lines now() const {
        const Lines found = addresses(_list);
        EXPECT_EQ(found, addressesInStore());
        return found;
    }

    const Handle& list() const { return _list; }

private:
    Handle _list;
};

}  // namespace zxtest
