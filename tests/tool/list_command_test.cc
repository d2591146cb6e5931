// The commands on address lists.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>
#include <sstream>

#include "lists/list_commands.h"
#include "stored/handles.h"
#include "stored/store.h"
#include "tool_fixture.h"

namespace tool {

namespace {

using nlohmann::json;
using testing::AnyOf;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class ListCommandTest : public ToolTest {
protected:
    ListCommandTest() {
        apply(
            "zxpolicy: 1\nlists:\n"
            "  - {name: L, displayName: Some, comment: c, addresses: [c@x, \"*@B.example\", \"*@a.example\", a@x, "
            "b@x]}\n"
            "  - {name: Staff, type: directory, displayName: \"St\\e[31maff\"}\n" +
            policyWithRoot("").substr(12));
    }

    // A real list of domains as entries that stand for all addresses in them.
    static std::string entriesOf(const std::string& file) {
        std::istringstream domains(read(ZX_DATA "/lists/" + file));
        std::string entries;
        for (std::string domain; std::getline(domains, domain);)
            entries += "*@" + domain + "\n";
        return entries;
    }

    // Runs a list command, which must exit with `status`, and returns its output; what it says about an error is in
    // `err`.
    std::string list(std::vector<std::string> arguments, int status = 0, const std::string& input = "") {
        arguments.insert(arguments.begin(), "list");
        const Outcome outcome = run(arguments, input);
        EXPECT_EQ(outcome.status, status) << outcome.err;
        err = outcome.err;
        EXPECT_LE(std::count(err.begin(), err.end(), '\n'), status == 0 ? 0 : 1) << err;
        return outcome.out;
    }
    std::string shown() { return list({"show", "L"}); }
    json listJson(const std::vector<std::string>& arguments, int status = 0, const std::string& input = "") {
        return json::parse(list(arguments, status, input));
    }

    std::string err;
};

// Lines with a number from 0 between two texts.
std::string linesOf(const std::string& before, const std::string& behind, int count) {
    std::string lines;
    for (int i = 0; i < count; ++i)
        lines.append(before).append(std::to_string(i)).append(behind).append("\n");
    return lines;
}

// Runs the commands' functions on a store of each engine.
class ListEngines : public ToolTest, public testing::WithParamInterface<const char*> {
protected:
    ListEngines() : _location(GetParam() == std::string("memory") ? "memory:lists" : location()) {
        apply("zxpolicy: 1\nlists: [{name: L}]\n" + policyWithRoot("").substr(12));
        if (_location == location()) return;
        // A store in memory lives as long as it is open.
        _store = std::make_unique<Store>(_location, Store::Missing::Create);
        ListHiveHandle hive;
        int result = ZXPOL_S_OK;
        hive = ListHiveHandle(zxpol_openAddrListHive(_store->key(), &result));
        const RuleHiveHandle rules(zxpol_openRuleHive(_store->key(), 0, &result));
        const RuleHandle root(zxpol_openRootRule(rules.get(), &result));
        _ZxPolAddrListAttr attr{};
        const ListHandle list(zxpol_createAddrList(hive.get(), "L", &attr, &result));
        EXPECT_TRUE(ZX_SUCCESS(result));
    }

    template <class Options>
    Options options() {
        Options made;
        made.store = _location;
        made.name = "L";
        return made;
    }
    std::string shown() {
        std::ostringstream lines;
        runListShow(options<ListShowOptions>(), lines);
        return lines.str();
    }

    std::ostringstream out;
    std::ostringstream err;

private:
    std::string _location;
    std::unique_ptr<Store> _store;
};

}  // namespace

// ---- looking -------------------------------------------------------------------------------------------

TEST_F(ListCommandTest, AllListsAreShownWithKindAndNumber) {
    const std::string expected =
        "list   kind       addresses  display name\n"
        "L      normal             5  Some\n"
        "Staff  directory          -  St\\x1B[31maff\n";
    EXPECT_EQ(list({}), expected);
    EXPECT_EQ(list({"show"}), expected);
    const std::string document =
        R"({"version":1,"lists":[{"name":"L","type":"normal","addresses":5,"displayName":"Some","comment":"c"},)"
        R"({"name":"Staff","type":"directory","addresses":null,"displayName":"St\u001b[31maff","comment":""}]})"
        "\n";
    EXPECT_EQ(list({"--format", "json"}), document);
    EXPECT_EQ(list({"show", "--json"}), document);
    apply(policyWithRoot(""));
    EXPECT_EQ(list({}), "there are no address lists\n");
    EXPECT_EQ(list({"--json"}), "{\"version\":1,\"lists\":[]}\n");
}

TEST_F(ListCommandTest, TheNumberOfAddressesIsFoundWhateverItIs) {
    std::string lists;
    for (int count = 0; count <= 70; ++count) {
        lists += "  - {name: L" + std::to_string(100 + count) + ", addresses: [";
        for (int i = 0; i < count; ++i)
            lists += (i == 0 ? "a" : ", a") + std::to_string(i) + "@x";
        lists += "]}\n";
    }
    apply("zxpolicy: 1\nlists:\n" + lists + policyWithRoot("").substr(12));
    const json shown = listJson({"--json"})["lists"];
    ASSERT_EQ(shown.size(), 71U);
    for (size_t i = 0; i < shown.size(); ++i)
        EXPECT_EQ(shown[i]["addresses"], std::stoi(shown[i]["name"].get<std::string>().substr(1)) - 100);
}

TEST_F(ListCommandTest, AddressesAreShownInThreeOrders) {
    EXPECT_EQ(list({"show", "L"}), "c@x\n*@B.example\n*@a.example\na@x\nb@x\n");
    EXPECT_EQ(list({"show", "L", "--order", "user"}), "c@x\n*@B.example\n*@a.example\na@x\nb@x\n");
    EXPECT_EQ(list({"show", "L", "--order", "ascending"}), "*@a.example\n*@B.example\na@x\nb@x\nc@x\n");
    EXPECT_EQ(list({"show", "L", "--order", "descending"}), "c@x\nb@x\na@x\n*@B.example\n*@a.example\n");
    EXPECT_EQ(list({"show", "L", "--json", "--order", "ascending"}),
              R"({"version":1,"name":"L","type":"normal","displayName":"Some","comment":"c",)"
              R"("addresses":["*@a.example","*@B.example","a@x","b@x","c@x"]})"
              "\n");
}

TEST_F(ListCommandTest, CheckSaysWhichEntryDecides) {
    EXPECT_EQ(list({"check", "L", "A@X"}), "\"A@X\" is matched by \"a@x\", weight 5000\n");
    EXPECT_EQ(list({"check", "L", "any@b.example"}), "\"any@b.example\" is matched by \"*@B.example\", weight 4000\n");
    EXPECT_EQ(list({"check", "L", "any@b.example", "--weight", "name"}),
              "\"any@b.example\" is matched by \"*@B.example\", weight 3000\n");
    EXPECT_EQ(list({"check", "L", "any@c.example"}, 1), "no entry of address list \"L\" matches \"any@c.example\"\n");
    EXPECT_EQ(err, "");
    EXPECT_EQ(list({"check", "L", "--json", "x@a.example"}),
              "{\"version\":1,\"list\":\"L\",\"address\":\"x@a.example\",\"matches\":true,\"entry\":\"*@a.example\","
              "\"weight\":4000}\n");
    EXPECT_EQ(list({"check", "L", "<>", "--json"}, 1),
              "{\"version\":1,\"list\":\"L\",\"address\":\"\",\"matches\":false,\"entry\":null,"
              "\"weight\":null}\n");
    list({"add", "L", "*"});
    EXPECT_EQ(list({"check", "L", "<>"}), "\"\" is matched by \"*\", weight 0\n");
}

TEST_F(ListCommandTest, TheHeaviestOfSeveralEntriesDecides) {
    list({"add", "L", "*@*.example", "*", "x@*", "x@*.example"});
    for (const auto& [address, weight, entry] : {std::tuple{"x@a.example", "domain", "*@a.example"},
                                                 {"x@a.example", "name", "x@*.example"},
                                                 {"x@d.example", "domain", "x@*.example"},
                                                 {"y@d.example", "domain", "*@*.example"},
                                                 {"x@other", "name", "x@*"},
                                                 {"y@other", "domain", "*"}})
        EXPECT_EQ(listJson({"check", "L", address, "--weight", weight, "--json"})["entry"], entry) << address;
}

TEST_F(ListCommandTest, ListsThatAreNotThereOrAreDirectoriesAreRefused) {
    const std::string file = write("f", "a@b\n");
    for (const std::vector<std::string>& command : {std::vector<std::string>{"show"},
                                                    {"check", "", "a@b"},
                                                    {"add", "", "a@b"},
                                                    {"remove", "", "a@b"},
                                                    {"import", "", file},
                                                    {"export"}}) {
        for (const auto& [name, says] :
             {std::pair{"None", "there is no address list \"None\" in sqlite:"},
              {"l", "there is no address list \"l\" in sqlite:"},
              {"Staff", "address list \"Staff\" is a directory list: ZXPOL_E_NOT_SUPPORTED (0x81020001): "}}) {
            std::vector<std::string> arguments = command;
            if (arguments.size() > 1) arguments.erase(arguments.begin() + 1);
            arguments.insert(arguments.begin() + 1, name);
            EXPECT_EQ(list(arguments, 3), "");
            EXPECT_THAT(err, StartsWith("zxpolicy: " + std::string(says))) << command[0];
            EXPECT_THAT(err, AnyOf(HasSubstr("ZXPOL_E_NOT_FOUND (0x81021804): "), HasSubstr("NOT_SUPPORTED")));
        }
    }
    list({"import", "None", file}, 3);
    EXPECT_THAT(err, EndsWith("give --create to make it, or add it to the policy file and apply that\n"));
}

TEST_F(ListCommandTest, StoresWithoutAPolicyAreRefused) {
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{}, {"show", "L"}, {"add", "L", "a@b"}, {"import", "L", "-", "--create"}}) {
        std::vector<std::string> arguments{"--store", "sqlite:" + path("none.db"), "list"};
        arguments.insert(arguments.end(), command.begin(), command.end());
        const Outcome outcome = runPlain(arguments, {}, "a@b\n");
        EXPECT_EQ(outcome.status, 3);
        EXPECT_THAT(outcome.err, HasSubstr("there is no store at "));
        struct stat status {};
        EXPECT_NE(stat(path("none.db").c_str(), &status), 0);
    }
    EXPECT_THAT(runPlain({"--store", "memory:", "list"}).err, HasSubstr("holds no policy"));
}

// ---- adding and removing ---------------------------------------------------------------------------------

TEST_F(ListCommandTest, AddingReportsWhatBecameOfEachAddress) {
    EXPECT_EQ(list({"add", "L", "new@x", "*@new.example"}),
              "address list \"L\": 2 added, 0 duplicate, 0 invalid; it holds 7\n");
    EXPECT_EQ(list({"add", "L", "A@X", "jo*@x", "newer@x", "newer@x", ""}, 1),
              "address list \"L\": 1 added, 2 duplicate, 2 invalid; it holds 8\n"
              "  \"jo*@x\" is invalid\n"
              "  \"\" is invalid\n");
    EXPECT_EQ(err,
              "zxpolicy: some addresses cannot be added to address list \"L\": ZXPOL_E_INVALID_FORMAT "
              "(0x8102000a): an address, condition or path is malformed; correct it\n");
    EXPECT_EQ(
        list({"add", "L", "--json", "x@y", "\x1b[2J"}, 1),
        R"({"version":1,"list":"L","dryRun":false,"added":1,"duplicate":0,"invalid":1,"passedOver":["\u001b[2J"],"addresses":9})"
        "\n");
    EXPECT_THAT(shown(), EndsWith("new@x\n*@new.example\nnewer@x\nx@y\n"));
}

TEST_F(ListCommandTest, RemovingTakesAnySpelling) {
    list({"add", "L", "\"d d\".\"e\"@x", "f.g@x"});
    EXPECT_EQ(list({"remove", "L", "D D.e@X", "\"f\".g@x", "*@b.EXAMPLE"}),
              "address list \"L\": 3 removed, 0 duplicate, 0 missing; it holds 4\n");
    EXPECT_EQ(list({"remove", "L", "none@x", "a@x", "A@x", "a@none"}, 1),
              "address list \"L\": 1 removed, 1 duplicate, 2 missing; it holds 3\n"
              "  \"none@x\" is not in the list\n"
              "  \"a@none\" is not in the list\n");
    EXPECT_EQ(err,
              "zxpolicy: some addresses cannot be removed from address list \"L\": ZXPOL_E_NOT_FOUND "
              "(0x81021804): the item is not in the store (any more); check the name and try again\n");
    EXPECT_EQ(shown(), "c@x\n*@a.example\nb@x\n");
}

TEST_F(ListCommandTest, ADryRunSaysWhatWouldBeAndChangesNothing) {
    const std::string before = shown();
    EXPECT_EQ(list({"add", "L", "new@x", "--dry-run"}),
              "address list \"L\": 1 added, 0 duplicate, 0 invalid; it would hold 6\n"
              "dry run: nothing was written\n");
    EXPECT_EQ(
        listJson({"remove", "L", "a@x", "b@x", "--dry-run", "--json"}),
        json::parse(R"({"version":1,"list":"L","dryRun":true,"removed":2,"duplicate":0,"missing":0,"passedOver":[],)"
                    R"("addresses":3})"));
    EXPECT_THAT(list({"import", "L", "-", "--replace", "--dry-run"}, 0, "new@x\n"),
                EndsWith("address list \"L\" would hold 1 in place of 5\ndry run: nothing was written\n"));
    list({"import", "New", "-", "--create", "--dry-run"}, 0, "new@x\n");
    EXPECT_EQ(shown(), before);
    EXPECT_EQ(listJson({"--json"})["lists"].size(), 2U);
}

// ---- files ---------------------------------------------------------------------------------------------

TEST_F(ListCommandTest, ImportCountsAndShowsTheFirstInvalidLines) {
    const std::string file =
        write("f", "new@x\r\n\n  C@X \nnew@x\n" + linesOf("bad ", "", 12) + "\x1b[2J\n*@n.example");
    EXPECT_THAT(list({"import", "L", file}, 1),
                ContainsRegex("^\"" + file + "\": 2 accepted, 2 duplicate, 13 invalid, in [0-9]+\\.[0-9][0-9] s\n" +
                              "  line 5: \"bad 0\" is invalid\n(  line [0-9]+: \"bad [0-9]\" is invalid\n){8}"
                              "  line 14: \"bad 9\" is invalid\n  and 3 more\n"
                              "address list \"L\" holds 7, before 5\n$"));
    EXPECT_EQ(err, "zxpolicy: some lines of \"" + file +
                       "\" are not in address list \"L\": ZXPOL_E_INVALID_FORMAT "
                       "(0x8102000a): an address, condition or path is malformed; correct it\n");
    EXPECT_EQ(shown(), "c@x\n*@B.example\n*@a.example\na@x\nb@x\nnew@x\n*@n.example\n");
}

TEST_F(ListCommandTest, ImportReportsAsJson) {
    json report = listJson({"import", "L", "-", "--json"}, 1, "a@x\n\nnew@x\n\x1b[2J\n");
    EXPECT_GE(report["seconds"].get<double>(), 0);
    report.erase("seconds");
    EXPECT_EQ(report,
              json::parse(R"({"version":1,"list":"L","file":"-","dryRun":false,"accepted":1,"duplicate":1,"invalid":1,)"
                          R"("firstInvalid":[{"line":4,"address":"\u001b[2J"}],"before":5,"addresses":6})"));
}

TEST_F(ListCommandTest, ImportReplacesWhenAsked) {
    EXPECT_THAT(list({"import", "L", "-", "--replace"}, 0, "z@x\na@x\n"),
                EndsWith("address list \"L\" holds 2 in place of 5\n"));
    EXPECT_EQ(shown(), "z@x\na@x\n");
}

TEST_F(ListCommandTest, ImportReadsDirectoryExports) {
    const std::string file = write("f",
                                   "dn: cn=a\nmail: a@ldap.example\nMAIL:b@ldap.example\ncn: a@not.example\n"
                                   "rfc822mailbox: c@ldap.example\nmail: bad\n");
    EXPECT_THAT(list({"import", "L", file, "--format", "directory", "--replace"}, 1),
                HasSubstr("3 accepted, 0 duplicate, 1 invalid"));
    EXPECT_EQ(shown(), "a@ldap.example\nb@ldap.example\nc@ldap.example\n");
}

TEST_F(ListCommandTest, ImportMakesAListOnlyWhenAsked) {
    EXPECT_THAT(list({"import", "New", "-", "--create"}, 0, "a@b\n"),
                EndsWith("address list \"New\" holds 1, before 0\n"));
    EXPECT_THAT(list({"import", "New", "-", "--create"}, 0, "c@b\n"),
                EndsWith("address list \"New\" holds 2, before 1\n"));
    list({"import", "new", "-", "--create"}, 3, "a@b\n");
    EXPECT_THAT(err, HasSubstr("differs from \"New\" only in letter case"));
    list({"import", "a\\b", "-", "--create"}, 2, "a@b\n");
    EXPECT_THAT(err, HasSubstr("backslash"));
    list({"import", "Bad", "-", "--create"}, 2, "bad\n");
    EXPECT_THAT(list({"show"}), Not(HasSubstr("Bad"))) << "the list was made for nothing";
}

TEST_F(ListCommandTest, FilesThatCannotBeImportedChangeNothing) {
    const std::string before = shown();
    const std::string tooLong = "z@x\n" + linesOf("long", "@x", 5000) + std::string(600, 'x') + "\nlast@x\n";
    for (const auto& [file, says] : {std::pair{path("none"), "cannot open \""},
                                     {path(""), "ZXPOL_E_FILE_READ (0x8102001a)"},
                                     {std::string(), "the path of the file to import is empty"},
                                     {path(std::string(300, 'x')), "longer than 259 bytes"},
                                     {write("empty", ""), "holds no address: ZXPOL_E_INVALID_FORMAT (0x8102000a)"},
                                     {write("blank", "\n \n\t\r\n"), "holds no address: "},
                                     {write("bad", "\nbad\nworse\n"), "holds no valid address; line 2 is \"bad\": "},
                                     {write("long", tooLong),
                                      "long\", line 5002: longer than 511 characters: "
                                      "ZXPOL_E_PARSE (0x81021806)"}}) {
        EXPECT_EQ(list({"import", "L", file, "--replace"}, 2), "");
        EXPECT_THAT(err, HasSubstr(says));
        EXPECT_EQ(shown(), before) << says;
    }
}

TEST_F(ListCommandTest, TheSecondLineOfADirectoryExportIsNoReasonToEmptyAList) {
    const std::string before = shown();
    const std::string file = write("f", "dn: cn=a\nmail: a@ldap.example\n");
    EXPECT_EQ(list({"import", "L", file, "--replace"}, 2), "");
    EXPECT_THAT(err, HasSubstr("or give another --format; nothing was changed"));
    EXPECT_EQ(shown(), before);
}

TEST_F(ListCommandTest, AnExportIsImportedBack) {
    list({"add", "L", "\"q q\"@x", "\"\x01\x1b\"@x"});
    const std::string exported = list({"export", "L"});
    EXPECT_EQ(exported, "c@x\n*@B.example\n*@a.example\na@x\nb@x\n\"q q\"@x\n\"\x01\x1b\"@x\n");
    EXPECT_EQ(list({"export", "L", path("exported")}), "");
    EXPECT_EQ(read(path("exported")), exported);
    list({"import", "Copy", path("exported"), "--create"});
    EXPECT_EQ(list({"export", "Copy", "-"}), exported);
    EXPECT_THAT(shown(), EndsWith("\"\\x01\\x1B\"@x\n"));
    list({"export", "L", path("none/out")}, 2);
    EXPECT_THAT(err, HasSubstr("none/out\": No such file or directory"));
    list({"export", "L", "/dev/full"}, 3);
    EXPECT_THAT(err, HasSubstr("cannot write \"/dev/full\": No space left on device; free some space"));
}

TEST_F(ListCommandTest, AnAddressWithALineBreakIsNotExportedInPieces) {
    list({"add", "L", "\"\\\n\"@x"});
    EXPECT_EQ(list({"export", "L"}, 3), "");
    EXPECT_THAT(err, HasSubstr("its address \"\\\"\\\\\\x0A\\\"@x\" holds a line break; use dump"));
    EXPECT_THAT(shown(), EndsWith("\"\\\\x0A\"@x\n"));
}

TEST_F(ListCommandTest, AStoreThatAnotherProgramIsChangingIsLeftAlone) {
    const std::string before = shown();
    int result = ZXREG_S_OK;
    const KeyHandle store(zxreg_openStore(location().c_str(), &result));
    zxreg_beginUpdate(store.get(), &result);
    ASSERT_TRUE(ZX_SUCCESS(result));
    for (const std::vector<std::string>& command :
         {std::vector<std::string>{"import", "L", "-"}, {"add", "L", "new@x"}, {"remove", "L", "a@x"}}) {
        std::vector<std::string> arguments{"--store", location(), "list"};
        arguments.insert(arguments.end(), command.begin(), command.end());
        const Outcome outcome = runPlain(arguments, {"ZXREG_BUSY_LIMIT=50"}, "new@x\n");
        EXPECT_EQ(outcome.status, 3);
        EXPECT_EQ(outcome.out, "");
        EXPECT_THAT(outcome.err, HasSubstr("ZXREG_E_BUSY (0x81021906)"));
    }
    zxreg_cancelUpdate(store.get(), &result);
    EXPECT_EQ(shown(), before);
}

TEST_F(ListCommandTest, AReportThatCannotBeWrittenIsAFailure) {
    const Outcome outcome = runShell("$zxpolicy list add L new@x >/dev/full");
    EXPECT_EQ(outcome.status, 3);
    EXPECT_THAT(outcome.err, HasSubstr("was changed in " + location() +
                                       ", but the report could not be written to standard output: No space left"));
    EXPECT_THAT(shown(), HasSubstr("new@x\n"));
}

// ---- large lists, and both engines ------------------------------------------------------------------------

// As quickstart does it.
TEST_F(ListCommandTest, TheExamplePolicyBlocksOneListAndLetsTheOtherThrough) {
    ASSERT_EQ(run({"apply", ZX_EXAMPLES "/policy.yaml"}).status, 0);
    EXPECT_EQ(listJson({"import", "Welcome", ZX_EXAMPLES "/lists/welcome.txt", "--replace", "--json"})["accepted"],
              997);
    EXPECT_EQ(listJson({"import", "Disposable", "-", "--json"}, 0, entriesOf("disposable_ded_CC0.txt"))["accepted"],
              8335);
    const auto decide = [&](const std::string& sender) {
        return json::parse(
            run({"match", "--json", "--sender", sender, "--receiver", "pi@netnoteinc.com"}).out)["matches"][0];
    };
    EXPECT_EQ(decide("offer@mailinator.com")["rule"], "\\Disposable senders");
    EXPECT_THAT(decide("offer@mailinator.com")["tasks"], testing::Contains("\\Disposable senders\\block"));
    EXPECT_EQ(decide("noreply@apple.com")["rule"], "\\Welcome senders");
    EXPECT_THAT(decide("noreply@apple.com")["tasks"], Not(testing::Contains("\\spam")));
    EXPECT_EQ(decide("ann@partner.example")["rule"], "\\Departments\\Sales");
    list({"add", "Welcome", "offer@mailinator.com"});
    EXPECT_EQ(decide("offer@mailinator.com")["rule"], "\\Welcome senders");
    EXPECT_EQ(run({"apply", ZX_EXAMPLES "/policy.yaml"}).out, "nothing to change\n");
}

// The counts are those of tests/data/SOURCES.md: all lines but the ones that are not ASCII.
TEST_F(ListCommandTest, ARealListOfDomainsIsImported) {
    const json report = listJson({"import", "L", "-", "--replace", "--json"}, 1, entriesOf("disposable_ivolo_MIT.txt"));
    EXPECT_EQ(report["accepted"], 121569 - 12);
    EXPECT_EQ(report["duplicate"], 0);
    EXPECT_EQ(report["invalid"], 12);
    EXPECT_EQ(report["firstInvalid"].size(), 10U);
    EXPECT_EQ(listJson({"check", "L", "who@0-180.com", "--json"})["entry"], "*@0-180.com");
    EXPECT_EQ(apply(dump()), "nothing to change\n");
}

TEST_P(ListEngines, ImportsAHundredThousandLines) {
    const std::string file =
        write("f", linesOf("name", "@some.example", 100000) + linesOf("Name", "@some.example", 10) + "bad\n" +
                       linesOf("*@domain", ".example", 1000));
    auto import = options<ListImportOptions>();
    import.file = file;
    EXPECT_EQ(runListImport(import, out, err), kAnswerIsNo);
    EXPECT_THAT(out.str(), HasSubstr(": 101,000 accepted, 10 duplicate, 1 invalid, in "));
    EXPECT_THAT(out.str(),
                HasSubstr("  line 100011: \"bad\" is invalid\naddress list \"L\" holds 101,000, before 0\n"));
    EXPECT_EQ(shown(), linesOf("name", "@some.example", 100000) + linesOf("*@domain", ".example", 1000));
    auto remove = options<ListEditOptions>();
    for (int i = 0; i < 50000; ++i)
        remove.addresses.push_back("NAME" + std::to_string(i * 2) + "@some.example");
    EXPECT_EQ(runListRemove(remove, out, err), kSuccess);
    EXPECT_THAT(out.str(), EndsWith("50,000 removed, 0 duplicate, 0 missing; it holds 51,000\n"));
    auto check = options<ListCheckOptions>();
    check.address = "name3@some.example";
    EXPECT_EQ(runListCheck(check, out), kSuccess);
    check.address = "name2@some.example";
    EXPECT_EQ(runListCheck(check, out), kAnswerIsNo);
}

TEST_P(ListEngines, ADryRunAndAFailureAreTakenBack) {
    auto add = options<ListEditOptions>();
    add.addresses = {"a@x", "b@x"};
    EXPECT_EQ(runListAdd(add, out, err), kSuccess);
    auto import = options<ListImportOptions>();
    import.file = write("f", "c@x\n");
    import.isReplacing = import.isDryRun = true;
    EXPECT_EQ(runListImport(import, out, err), kSuccess);
    EXPECT_EQ(shown(), "a@x\nb@x\n");
    import.isDryRun = false;
    import.file = write("f", "c@x\n" + std::string(600, 'x'));
    EXPECT_THROW(runListImport(import, out, err), UsageError);
    EXPECT_EQ(shown(), "a@x\nb@x\n");
    import.file = write("f", "c@x\n");
    EXPECT_EQ(runListImport(import, out, err), kSuccess);
    EXPECT_EQ(shown(), "c@x\n");
}

INSTANTIATE_TEST_SUITE_P(All, ListEngines, testing::Values("memory", "sqlite"),
                         [](const auto& test) { return std::string(test.param); });

}  // namespace tool
