// Lists of addresses in policies: apply and dump.
#include <gmock/gmock.h>

#include "change/apply.h"
#include "policy/address_text.h"
#include "policy/policy_reader.h"
#include "policy/policy_writer.h"
#include "stored/handles.h"
#include "stored/policy_store_reader.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

using ListPolicyTest = ToolTest;

// A policy with the lists, one in each line.
std::string policyWithLists(const std::string& lists) {
    return "zxpolicy: 1\nlists:\n" + lists + policyWithRoot("").substr(12);
}

std::string listOf(const std::string& addresses) {
    return policyWithLists("  - {name: L, addresses: [" + addresses + "]}\n");
}

std::vector<std::string> numbered(const std::string& before, const std::string& behind, int first, int count) {
    std::vector<std::string> addresses;
    for (int i = first; i < first + count; ++i)
        addresses.push_back(before + std::to_string(i) + behind);
    return addresses;
}

// The names of the values that the store has for the list L.
std::vector<std::string> storedValues(const std::string& location) {
    std::vector<std::string> names;
    int result = ZXREG_S_OK;
    const KeyHandle store(zxreg_openStore(location.c_str(), &result));
    const KeyHandle key(zxreg_openKey(store.get(), "AddressList\\L", &result));
    for (uint32_t index = 0; ZX_SUCCESS(result); ++index) {
        char name[ZXREG_MAX_NAME + 1];
        uint32_t size = sizeof name;
        zxreg_enumValue(key.get(), index, name, &size, nullptr, nullptr, nullptr, &result);
        if (ZX_SUCCESS(result)) names.emplace_back(name);
    }
    return names;
}

// Runs on a store of each engine.
class ListPolicyEngines : public ToolTest, public testing::WithParamInterface<const char*> {
protected:
    ListPolicyEngines()
        : _store(GetParam() == std::string("memory") ? "memory:" : location(), Store::Missing::Create) {}

    ChangeLog apply(const std::vector<std::string>& addresses, bool isDryRun = false) {
        Policy policy = readPolicy("p", listOf(""));
        std::get<NormalList>(policy.lists["L"]).addresses = addresses;
        return applyPolicy(_store, "p", policy, isDryRun).changes;
    }
    std::string text(const ChangeLog& changes) {
        std::ostringstream out;
        changes.print(out, OutputFormat::Text, false);
        return out.str();
    }
    std::vector<std::string> stored() {
        const StoredPolicy read = readPolicySnapshot(_store, Secrets::Leave);
        EXPECT_THAT(read.problems, testing::IsEmpty());
        return *std::get<NormalList>(read.policy.lists.at("L")).addresses;
    }

private:
    Store _store;
};

}  // namespace

TEST_P(ListPolicyEngines, ApplyMakesTheListHoldExactlyTheAddresses) {
    EXPECT_EQ(text(apply({"c@x", "*@a.example", "\"b b\".d@x", "a@x"})),
              "created address list L (addresses: added 4 (\"c@x\", \"*@a.example\", \"\\\"b b\\\".d@x\", ...))\n"
              "1 created\n");
    EXPECT_THAT(stored(), ElementsAre("c@x", "*@a.example", "\"b b\".d@x", "a@x"));
    EXPECT_EQ(text(apply({"new@x", "a@x", "c@x"})),
              "changed address list L (addresses: added 1 (\"new@x\"), removed 2 (\"*@a.example\", \"\\\"b "
              "b\\\".d@x\"))\n1 changed\n");
    EXPECT_THAT(stored(), ElementsAre("c@x", "a@x", "new@x"));
    EXPECT_EQ(text(apply({})),
              "changed address list L (addresses: removed 3 (\"c@x\", \"a@x\", \"new@x\"))\n1 changed\n");
    EXPECT_THAT(stored(), ElementsAre());
}

TEST_P(ListPolicyEngines, AnotherSpellingIsTheSameAddressAndStaysAsItIsStored) {
    apply({"Ann@X.example", "\"b\".c@x", "*@Y.example"});
    EXPECT_EQ(text(apply({"*@y.EXAMPLE", "ANN@x.example", "b.C@X"})), "nothing to change\n");
    EXPECT_THAT(stored(), ElementsAre("Ann@X.example", "\"b\".c@x", "*@Y.example"));
    apply({"b.C@X"});
    EXPECT_THAT(stored(), ElementsAre("\"b\".c@x"));
}

TEST_P(ListPolicyEngines, ADryRunLeavesTheListAsItWas) {
    apply({"a@x", "b@x"});
    EXPECT_FALSE(apply({"c@x"}, true).isEmpty());
    EXPECT_THAT(stored(), ElementsAre("a@x", "b@x"));
    EXPECT_FALSE(apply({"b@x", "c@x"}).isEmpty());
    EXPECT_THAT(stored(), ElementsAre("b@x", "c@x"));
}

TEST_P(ListPolicyEngines, LargeListsComeChangeAndGo) {
    constexpr int kCount = 100000;
    const std::vector<std::string> first = numbered("name", "@some.example", 0, kCount);
    const std::vector<std::string> second = numbered("Name", "@some.Example", kCount / 2, kCount);
    apply(first);
    EXPECT_EQ(stored(), first);
    EXPECT_TRUE(apply(first).isEmpty());
    EXPECT_THAT(text(apply(second)), HasSubstr("added 50,000 (\"Name100000@some.Example\", "));
    EXPECT_TRUE(sameAddresses(stored(), second));
    EXPECT_THAT(text(apply({"a@x"})), HasSubstr("added 1 (\"a@x\"), removed 100,000 ("));
    EXPECT_THAT(stored(), ElementsAre("a@x"));
}

INSTANTIATE_TEST_SUITE_P(All, ListPolicyEngines, testing::Values("memory", "sqlite"),
                         [](const auto& test) { return std::string(test.param); });

TEST_F(ListPolicyTest, ADumpHasTheAddressesInUserOrderAndChangesNothing) {
    apply(listOf("z@x, \"*@m.example\", a@x"));
    const std::string dumped = dump();
    EXPECT_THAT(dumped, HasSubstr("  - name: L\n    addresses:\n      - \"z@x\"\n      - \"*@m.example\"\n"
                                  "      - \"a@x\"\n"));
    EXPECT_EQ(apply(dumped), "nothing to change\n");
    apply(listOf(""));
    EXPECT_THAT(dump(), HasSubstr("  - name: L\n    addresses: []\n"));
    EXPECT_EQ(apply(dump()), "nothing to change\n");
}

TEST_F(ListPolicyTest, AddressesThatAreHardToWriteAreKept) {
    const std::vector<std::string> addresses{"#&%{}|!=?~`'$+-/^_@x",
                                             "\"a: b, [c] {d} # & ! | > ' % @ `\"@x.example",
                                             "\"- \"@x",
                                             "~@x",
                                             "\"\\\n\"@x",
                                             "\"\x01\x1b[31m\x7f\"@x",
                                             "\"\\\xff\xc3\"@x",
                                             "\"\\\xc3\xa4\"@x",
                                             "\"a\\\\b\\\"c\"@x",
                                             "true@x",
                                             "x@[10.0.0.1]",
                                             "*@[*]",
                                             "1e5@5",
                                             "\"a@b\"@c"};
    Policy policy = readPolicy("p", listOf(""));
    std::get<NormalList>(policy.lists["L"]).addresses = addresses;
    apply(writePolicy(policy));
    const std::string dumped = dump();
    EXPECT_EQ(dumped.find('\x1b'), std::string::npos);
    EXPECT_EQ(firstDifference(readPolicy("p", dumped), policy), "");
    EXPECT_EQ(apply(dumped), "nothing to change\n");
}

TEST_F(ListPolicyTest, ADuplicateOrInvalidAddressChangesNothing) {
    apply(listOf("a@x"));
    const std::string before = dump();
    const std::string file =
        write("p.yaml", policyWithLists("  - name: L\n    addresses:\n      - b@x\n      - B@X\n"));
    const Outcome outcome = run({"apply", file});
    EXPECT_EQ(outcome.status, 3);
    EXPECT_EQ(outcome.err, "zxpolicy: " + file + ":6:9: address \"B@X\" of list \"L\" is the same as \"b@x\"\n");
    EXPECT_EQ(dump(), before);
}

TEST_F(ListPolicyTest, AddressesThatTheFileDoesNotNameStay) {
    apply(listOf("a@x, b@x"));
    EXPECT_EQ(apply(policyWithLists("  - {name: L}\n")), "nothing to change\n");
    EXPECT_EQ(apply(policyWithLists("  - {name: L, displayName: New}\n")),
              "changed address list L (displayName: \"\" -> \"New\")\n1 changed\n");
    EXPECT_THAT(dump(), HasSubstr("- \"b@x\"\n"));
    EXPECT_EQ(apply(policyWithLists("  - {name: M}\n")),
              "deleted address list L (with addresses: 2)\ncreated address list M\n1 created, 1 deleted\n");
    EXPECT_THAT(dump(), HasSubstr("  - name: M\n    addresses: []\n"));
}

TEST_F(ListPolicyTest, AListOfAnotherKindKeepsNothingOfItsOldOne) {
    const std::string directory =
        policyWithLists("  - {name: L, type: directory, comment: c, server: s, password: secret}\n");
    apply(directory);
    EXPECT_EQ(apply(listOf("a@x")),
              "changed address list L (type: directory -> normal; comment: \"c\" -> \"\"; addresses: added 1 "
              "(\"a@x\"))\n1 changed\n");
    EXPECT_THAT(storedValues(location()), testing::UnorderedElementsAre("type", "displayName", "comment", "address1"));
    EXPECT_EQ(apply(dump()), "nothing to change\n");
    EXPECT_EQ(apply(directory),
              "changed address list L (type: normal -> directory; comment: \"\" -> \"c\"; addresses: removed 1 "
              "(\"a@x\"))\n1 changed\n");
    EXPECT_THAT(storedValues(location()), Not(testing::Contains("address1")));
    EXPECT_THAT(run({"dump", "--with-secrets"}).out, HasSubstr("password: \"secret\""));
    EXPECT_EQ(apply(policyWithLists("  - {name: L}\n")),
              "changed address list L (type: directory -> normal; comment: \"c\" -> \"\")\n1 changed\n");
    EXPECT_THAT(dump(), HasSubstr("addresses: []"));
}

// Through the interface a list changes its kind and keeps the values of the old one.
TEST_F(ListPolicyTest, WhatIsLeftOfAListsOldKindMeansNothing) {
    apply(policyWithLists("  - {name: L, type: directory, server: s, password: secret}\n"));
    const auto setKind = [&](uint32_t type) {
        int result = ZXREG_S_OK;
        const KeyHandle store(zxreg_openStore(location().c_str(), &result));
        const ListHiveHandle hive(zxpol_openAddrListHive(store.get(), &result));
        _ZxPolAddrListAttr attr{};
        attr.type = type;
        const ListHandle list(type == ZXPOL_ADDRLIST_NORMAL ? zxpol_openAddrList(hive.get(), "L", &result)
                                                            : zxpol_createAddrList(hive.get(), "L", &attr, &result));
        zxpol_setAddrListAttrib(list.get(), &attr, &result);
        ASSERT_TRUE(ZX_SUCCESS(result)) << std::hex << result;
    };
    setKind(ZXPOL_ADDRLIST_NORMAL);
    EXPECT_THAT(dump(), HasSubstr("  - name: L\n    addresses: []\n"));
    EXPECT_EQ(apply(dump()), "nothing to change\n");
    EXPECT_EQ(apply(listOf("a@x")), "changed address list L (addresses: added 1 (\"a@x\"))\n1 changed\n");
    apply(policyWithRoot(""));
    apply(listOf("a@x"));
    setKind(ZXPOL_ADDRLIST_DIRECTORY);
    EXPECT_THAT(dump(), HasSubstr("  - name: L\n    type: directory\n"));
    EXPECT_EQ(apply(dump()), "nothing to change\n");
    EXPECT_EQ(apply(listOf("")), "changed address list L (type: directory -> normal)\n1 changed\n");
    EXPECT_THAT(dump(), Not(HasSubstr("a@x")));
}

TEST_F(ListPolicyTest, TheOrderInTheEnvironmentDoesNotReachTheTool) {
    apply(listOf("c@x, b@x, \"*@x\", a@x"));
    const std::string dumped = dump();
    for (const char* order : {"order=decending", "order=ascending", "order="}) {
        EXPECT_EQ(runPlain({"--store", location(), "dump"}, {order}).out, dumped);
        EXPECT_EQ(runPlain({"--store", location(), "apply", "-"}, {order}, dumped).out, "nothing to change\n");
        EXPECT_EQ(runPlain({"--store", location(), "apply", "-"}, {order}, listOf("c@x, b@x")).err, "");
        EXPECT_EQ(runPlain({"--store", location(), "apply", "-"}, {order}, dumped).out,
                  "changed address list L (addresses: added 2 (\"*@x\", \"a@x\"))\n1 changed\n");
        EXPECT_EQ(runPlain({"--store", location(), "list", "show", "L"}, {order}).out, "c@x\nb@x\n*@x\na@x\n");
        EXPECT_EQ(runPlain({"--store", location(), "list", "export", "L"}, {order}).out, "c@x\nb@x\n*@x\na@x\n");
        EXPECT_THAT(runPlain({"--store", location(), "list"}, {order}).out, HasSubstr("normal          4"));
    }
}

TEST_F(ListPolicyTest, RulesThatNameListsMatchTheirEntries) {
    apply("zxpolicy: 1\nlists:\n  - {name: Blocked, addresses: [\"*@throwaway.example\", bad@x.example]}\n" +
          policyWithRoot("  rules:\n    - {name: Block, conditions: [{sender: (Blocked), receiver: \"*\"}]}\n")
              .substr(12));
    for (const auto& [sender, rule] : {std::pair{"any@throwaway.example", "\\\\Block"},
                                       {"BAD@x.example", "\\\\Block"},
                                       {"good@x.example", "\\\\"},
                                       {"any@sub.throwaway.example", "\\\\"}})
        EXPECT_THAT(run({"match", "--json", "--sender", sender, "--receiver", "me@here.example"}).out,
                    HasSubstr("\"rule\":\"" + std::string(rule) + "\""))
            << sender;
}

}  // namespace tool
