// Many threads that decide on mails, edit rules, and open and close what they need, in one process.
#include <gtest/gtest.h>

#include <memory>

#include "threads/policy_client.h"
#include "threads/threads_fixture.h"

using threads::Addresses;
using threads::Crew;
using threads::PolicyClient;

namespace {

class PolicyThreads : public ::testing::TestWithParam<const char*> {
protected:
    PolicyThreads() : _store(GetParam()) {
        PolicyClient client(_store.location());
        client.addRule("Lasting", "lasting@sender.example", "*");
        client.addTask("Lasting", "scan");
    }

    // Adds a thread that makes and deletes a rule of its own, again and again.
    void addEditor(Crew& crew, const std::string& name) const {
        crew.add([this, name] {
            const auto client = std::make_shared<PolicyClient>(_store.location());
            return [client, name] {
                client->addRule(name, name + "@*.example", "*@*");
                client->addTask(name, "t");
                EXPECT_EQ(Addresses{"\\" + name + " 2 1"},
                          client->match(0, name + "@sender.example", {"a@one.example", "b@two.example"}));
                client->removeRule(name);
            };
        });
    }

    // Adds a thread that decides on mails, in the one mode and the other, and opens its hives afresh now and then.
    void addDecider(Crew& crew) const {
        crew.add([this] {
            const auto turns = std::make_shared<uint32_t>(0);
            const auto client = std::make_shared<std::unique_ptr<PolicyClient>>();
            return [this, turns, client] {
                if (*turns % 16 == 0) *client = std::make_unique<PolicyClient>(_store.location());
                const uint32_t mode = (*turns)++ % 2;
                EXPECT_EQ(Addresses{"\\Lasting 3 1"},
                          (*client)->match(mode, "smtp:lasting@sender.example", threads::numbered("r", 3)));
            };
        });
    }

    threads::SharedStore _store;
};

TEST_P(PolicyThreads, DecideBesideEditsOfOtherRules) {
    Crew crew;
    addEditor(crew, "one");
    addEditor(crew, "two");
    addDecider(crew);
    addDecider(crew);
    addDecider(crew);
    crew.work();
    EXPECT_EQ(Addresses{"Lasting"}, PolicyClient(_store.location()).childNames());
}

INSTANTIATE_TEST_SUITE_P(Engines, PolicyThreads, ::testing::Values("memory", "sqlite"),
                         [](const ::testing::TestParamInfo<const char*>& engine) { return std::string(engine.param); });

}  // namespace
