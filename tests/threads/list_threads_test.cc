// Many threads at once on lists of one name, each with objects of its own.
#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>

#include "threads/threads_fixture.h"

using threads::Addresses;
using threads::Crew;
using threads::Failure;
using threads::ListClient;
using threads::SharedStore;
using threads::startingWith;

namespace {

constexpr const char* kList = "Partners";
const Addresses kAlways = {"always@example.com", "*@*.always.example", "lasting@*"};
constexpr uint32_t kExactWeight = 5000;
constexpr uint32_t kSuffixWeight = 2002;
constexpr uint32_t kNameWeight = 1000;

// A thread that changes the list, in addresses of its own range; it knows what of them the list must hold.
class Writer {
public:
    Writer(const std::string& location, std::string prefix)
        : _list(std::make_unique<ListClient>(location, kList)), _prefix(std::move(prefix)), _random(_prefix.size()) {
        _list->open();
    }

    void turn() {
        const unsigned choice = static_cast<unsigned>(_random() % 10);
        if (choice == 0) return _list->open();
        if (choice < 6 || _held.empty())
            insert(1 + _random() % 12);
        else
            erase(1 + _random() % std::min<size_t>(_held.size(), 14));
    }

    const Addresses& held() const { return _held; }
    const std::string& prefix() const { return _prefix; }

private:
    void insert(size_t count) {
        Addresses added;
        while (added.size() < count)
            added.push_back(newAddress());
        _list->insert(added);
        _held.insert(_held.end(), added.begin(), added.end());
        for (const std::string& address : added)
            EXPECT_TRUE(_list->matches(subjectOf(address))) << address;
    }

    void erase(size_t count) {
        Addresses removed;
        while (removed.size() < count) {
            const auto place = _held.begin() + static_cast<std::ptrdiff_t>(_random() % _held.size());
            removed.push_back(*place);
            _held.erase(place);
        }
        EXPECT_TRUE(_list->erase(removed)) << removed.size() << " of " << _prefix;
        for (const std::string& address : removed)
            EXPECT_FALSE(_list->matches(subjectOf(address))) << address;
    }

    // Long ones, that values fill soon; every third one a pattern.
    std::string newAddress() {
        const std::string name = _prefix + std::to_string(_made++);
        if (_made % 3 == 0) return name + "@*." + std::string(20, 'd') + ".example";
        return name + std::string(60 + _random() % 60, 'n') + "@example.com";
    }
    static std::string subjectOf(std::string address) {
        const size_t star = address.find('*');
        return star == std::string::npos ? address : address.replace(star, 1, "host.sub");
    }

    std::unique_ptr<ListClient> _list;
    const std::string _prefix;
    std::mt19937 _random;
    Addresses _held;
    size_t _made = 0;
};

void expectAlways(const ListClient& list) {
    EXPECT_EQ(kExactWeight, list.weight("Always@Example.com"));
    EXPECT_EQ(kSuffixWeight, list.weight("anybody@mail.always.example"));
    EXPECT_EQ(kNameWeight, list.weight("lasting@elsewhere.org"));
    EXPECT_FALSE(list.matches("never@example.com"));
    EXPECT_FALSE(list.matches("never@mail.never.example"));
}

class ListThreads : public ::testing::TestWithParam<const char*> {
protected:
    ListThreads() : _store(GetParam()) {}

    const std::string& location() const { return _store.location(); }

    // A list that holds kAlways and no more.
    std::unique_ptr<ListClient> newList(const std::string& where) const {
        auto list = std::make_unique<ListClient>(where, kList);
        list->create();
        list->insert(kAlways);
        return list;
    }

    static void addWriters(Crew& crew, std::vector<std::unique_ptr<Writer>>& writers) {
        for (const std::unique_ptr<Writer>& writer : writers)
            crew.add([&writer] { return [&writer] { writer->turn(); }; });
    }

    // Adds a thread that looks at what never changes, through an object that it opens again now and then.
    static void addReader(Crew& crew, const std::string& where, const std::string& prefix) {
        crew.add([where, prefix] {
            const auto list = std::make_shared<ListClient>(where, kList);
            const auto turns = std::make_shared<unsigned>(0);
            list->open();
            return [list, turns, prefix] {
                if (++*turns % 8 == 0) list->open();
                expectAlways(*list);
                if (*turns % 4 != 0) return;
                const Addresses entries = list->entries();
                EXPECT_EQ(kAlways, Addresses(entries.begin(), entries.begin() + 3));
                const Addresses others(entries.begin() + 3, entries.end());
                EXPECT_EQ(others.size(), startingWith(prefix, others).size());
            };
        });
    }

    // Nothing is lost: what each thread left in the list is there, in the order in which it came.
    static void expectAll(const std::string& where, const std::vector<std::unique_ptr<Writer>>& writers) {
        ListClient list(where, kList);
        list.open();
        threads::expectInStep(list);
        size_t count = kAlways.size();
        const Addresses entries = list.entries();
        for (const std::unique_ptr<Writer>& writer : writers) {
            EXPECT_EQ(writer->held(), startingWith(writer->prefix(), entries));
            count += writer->held().size();
        }
        EXPECT_EQ(count, entries.size());
        expectAlways(list);
    }

    SharedStore _store;
};
INSTANTIATE_TEST_SUITE_P(Engines, ListThreads, ::testing::Values("memory", "sqlite"),
                         [](const auto& engine) { return std::string(engine.param); });

TEST_P(ListThreads, LoseNothingOfEachOther) {
    const auto kept = newList(location());
    std::vector<std::unique_ptr<Writer>> writers;
    for (const char* prefix : {"w-a-", "w-bb-", "w-ccc-"})
        writers.push_back(std::make_unique<Writer>(location(), prefix));
    Crew crew;
    addWriters(crew, writers);
    addReader(crew, location(), "w-");
    addReader(crew, location(), "w-");
    crew.work();
    expectAll(location(), writers);
    // The object that was there before the first change has followed them all.
    threads::expectInStep(*kept);
}

TEST_P(ListThreads, KeepStoresApart) {
    const SharedStore other(GetParam());
    const auto here = newList(location()), there = newList(other.location());
    std::vector<std::unique_ptr<Writer>> writersHere, writersThere;
    writersHere.push_back(std::make_unique<Writer>(location(), "here-a-"));
    writersHere.push_back(std::make_unique<Writer>(location(), "here-bb-"));
    writersThere.push_back(std::make_unique<Writer>(other.location(), "there-"));
    Crew crew;
    addWriters(crew, writersHere);
    addWriters(crew, writersThere);
    addReader(crew, location(), "here-");
    addReader(crew, other.location(), "there-");
    crew.work();
    expectAll(location(), writersHere);
    expectAll(other.location(), writersThere);
}

// While one thread deletes the list and makes it again, everything else either works or says that the list is gone.
TEST_P(ListThreads, BearThatTheListIsDeleted) {
    newList(location());
    Crew crew;
    crew.add([this] {
        const auto list = std::make_shared<ListClient>(location(), kList);
        return [list] {
            list->remove();
            list->create();
            list->insert(kAlways);
        };
    });
    for (const std::string prefix : {"a-", "b-", "c-"}) {
        crew.add([this, prefix] {
            const auto list = std::make_shared<ListClient>(location(), kList);
            const auto made = std::make_shared<size_t>(0);
            return [list, made, prefix] {
                try {
                    list->open();
                    EXPECT_FALSE(list->matches("never@example.com"));
                    list->insert({prefix + std::to_string(++*made) + "@example.com", prefix + "@*.x"});
                    EXPECT_FALSE(list->matches("never@never.example"));
                    list->erase({prefix + "@*.x"});
                    list->entries();
                } catch (const Failure& failure) {
                    if (!threads::isOfDeletion(failure)) throw;
                }
            };
        });
    }
    crew.work();
    ListClient list(location(), kList);
    list.open();
    threads::expectInStep(list);
    expectAlways(list);
}

TEST_P(ListThreads, ImportTwoFilesAtOnce) {
    newList(location());
    const Addresses common = threads::numbered("both-", 500);
    Addresses first = threads::numbered("first-", 2500), second = threads::numbered("second-", 2500);
    first.insert(first.begin() + 1000, common.begin(), common.end());
    second.insert(second.begin() + 2000, common.begin(), common.end());
    const threads::AddressFile files[] = {threads::AddressFile(first), threads::AddressFile(second)};
    Crew crew;
    for (const threads::AddressFile& file : files) {
        crew.addOnce([this, &file] {
            ListClient list(location(), kList);
            list.open();
            list.import(file.path(), false);
        });
    }
    addReader(crew, location(), "");
    crew.work();
    ListClient list(location(), kList);
    list.open();
    threads::expectInStep(list);
    const Addresses entries = list.entries();
    EXPECT_EQ(threads::numbered("first-", 2500), startingWith("first-", entries));
    EXPECT_EQ(threads::numbered("second-", 2500), startingWith("second-", entries));
    EXPECT_EQ(common, startingWith("both-", entries));
    EXPECT_EQ(kAlways.size() + 5500, entries.size());
}

// Of imports that replace the list, the last one is left, whole.
TEST_P(ListThreads, ReplaceTheListAtOnce) {
    newList(location());
    const Addresses contents[] = {threads::numbered("first-", 700), threads::numbered("second-", 1500)};
    const threads::AddressFile files[] = {threads::AddressFile(contents[0]), threads::AddressFile(contents[1])};
    Crew crew;
    for (const threads::AddressFile& file : files) {
        crew.add([this, &file] {
            const auto list = std::make_shared<ListClient>(location(), kList);
            list->open();
            return [list, &file] { list->import(file.path(), true); };
        });
    }
    crew.work();
    ListClient list(location(), kList);
    list.open();
    threads::expectInStep(list);
    const Addresses entries = list.entries();
    EXPECT_TRUE(entries == contents[0] || entries == contents[1]) << entries.size();
}

}  // namespace
