// Explained matches of random policies: the same answers as those that nobody watches, in both modes with all options,
// and steps that lead to them.
#include <random>

#include "support/recorded_steps.h"

namespace {

using zxtest::Lines;

// What the steps of a match lead to: the rule of each receiver, and the tasks of each rule.
class AnswerOfSteps {
public:
    static void observe(void* context, const _ZxPolMatchStep* step) {
        static_cast<AnswerOfSteps*>(context)->take(*step);
    }

    // As PolicyTest writes a matched rule: "path: receivers | tasks".
    Lines lines() const {
        Lines found;
        for (const Rule& rule : _rules) {
            std::string line = rule.path + ":";
            for (const auto& [receiver, path] : _receivers)
                if (path == rule.path) line += " " + receiver;
            line += " |";
            for (const std::string& task : rule.tasks)
                line += " " + task.substr(task.rfind('\\') + 1);
            found.push_back(line);
        }
        return found;
    }

private:
    struct Rule {
        std::string path;
        Lines tasks;
    };

    void take(const _ZxPolMatchStep& step) {
        if (step.kind == ZXPOL_STEP_RECEIVER_DECIDED && step.isMatched != 0)
            _receivers.emplace_back(step.receiver, step.rulePath);
        if (step.kind == ZXPOL_STEP_COLLECTION) _rules.push_back({step.rulePath, {}});
        if (step.kind != ZXPOL_STEP_TASK) return;
        Lines& tasks = _rules.back().tasks;
        if (step.fate == ZXPOL_FATE_REPLACES) {
            const auto replaced = std::find(tasks.begin(), tasks.end(), step.otherPath);
            ASSERT_NE(tasks.end(), replaced) << step.otherPath;
            tasks.erase(replaced);
        }
        if (step.fate == ZXPOL_FATE_REPLACES || step.fate == ZXPOL_FATE_TAKEN) tasks.emplace_back(step.taskPath);
    }

    std::vector<std::pair<std::string, std::string>> _receivers;
    std::vector<Rule> _rules;
};

class RandomExplanation : public zxtest::ListTest {
protected:
    size_t below(size_t count) { return std::uniform_int_distribution<size_t>(0, count - 1)(_random); }
    template <size_t N>
    const char* oneOf(const char* const (&texts)[N]) {
        return texts[below(N)];
    }

    std::string address() { return std::string(oneOf({"a", "b", "smtp:c"})) + "@" + oneOf({"x.t", "y.t", "z.x.t"}); }
    std::string side() {
        return oneOf({"*", "*", "*@x.t", "a@x.t", "b@*", "*@*.t", "a@*.t", "b@y.t", "(L)", "(M)", "(Dir)", "(No)"});
    }

    void build() {
        create("L", {"*@x.t", "a@*.t", "b@y.t"});
        create("M", {"a@x.t", "*@*.x.t"});
        addDirectoryList("Dir");
        setExclusive(1, ZXPOL_FILTER_ASC_EXCLUSIVE);
        setExclusive(2, ZXPOL_FILTER_DESC_EXCLUSIVE);
        Lines paths{"\\"};
        Lines tasks;
        for (size_t left = 3 + below(8); left != 0; --left) {
            const std::string parent = paths[below(paths.size())];
            const std::string name = std::string(1, static_cast<char>('A' + paths.size()));
            addRule(parent, name);
            paths.push_back((parent == "\\" ? parent : parent + "\\") + name);
        }
        // Behind the library's back, which would want them covered by the rule above.
        for (size_t at = 1; at < paths.size(); ++at) {
            zxtest::RawKey key = rawRule(paths[at]);
            for (size_t place = 1 + below(3); place != 0; --place)
                key.setText("condition" + std::to_string(place), side() + "," + side());
        }
        for (size_t left = below(9); left != 0; --left) {
            const std::string path = paths[below(paths.size())];
            const std::string name = "t" + std::to_string(left);
            addTask(path, name,
                    {static_cast<uint32_t>(below(3)), below(5) == 0 ? 0 : 1, static_cast<int32_t>(below(2))});
            tasks.push_back((path == "\\" ? path : path + "\\") + name);
        }
        for (const std::string& task : tasks)
            if (below(2) == 0) inactivate(paths[below(paths.size())], task);
    }

    void compare(uint32_t mode) {
        const std::string sender = below(8) == 0 ? "" : address();
        const Lines texts{address(), address(), address()};
        const char* receivers[] = {texts[0].c_str(), texts[1].c_str(), texts[2].c_str(), nullptr};
        AnswerOfSteps answer;
        _ZxPolMatchPair* pairs = nullptr;
        uint32_t count = 0;
        int error = ZXPOL_S_OK;
        zxpol_explainMatch(ruleHive(), listHive(), mode, sender.c_str(), receivers, &AnswerOfSteps::observe, &answer,
                           &pairs, &count, &error);
        Lines lines;
        for (uint32_t at = 0; at < count; ++at)
            lines.push_back(lineOf(pairs[at]));
        int freed = ZXPOL_S_OK;
        zxpol_freeMatchPair(pairs, count, &freed);
        const MatchResult plain = match(sender, {receivers[0], receivers[1], receivers[2]}, mode);
        EXPECT_CODE(plain.code, error);
        EXPECT_EQ(plain.lines, lines);
        EXPECT_TRUE(error < 0 || plain.lines == answer.lines()) << testing::PrintToString(answer.lines());
        _matched += lines.size();
    }

    std::mt19937 _random;
    size_t _matched = 0;
};
INSTANTIATE_TEST_SUITE_P(Seeds, RandomExplanation, testing::Values("memory"));

TEST_P(RandomExplanation, IsWhatThePlainMatchAnswers) {
    for (unsigned int seed = 1; seed <= 300; ++seed) {
        SCOPED_TRACE(seed);
        _random.seed(seed);
        if (seed > 1) {
            TearDown();
            SetUp();
        }
        build();
        for (uint32_t option = 0; option < 7; ++option) {
            const _ZxPolMatchOption options = {1, option % 3, option / 3, 0, 0};
            int error = ZXPOL_S_OK;
            zxpol_setMatchOption(&options, &error);
            for (int mail = 0; mail < 6; ++mail)
                compare(option == 6 ? 0 : 1);
        }
        if (HasFailure()) return;
    }
    EXPECT_GT(_matched, 10000u);
}

}  // namespace
