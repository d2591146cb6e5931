#include "model/sequence.h"

#include <algorithm>

#include "model/address_source.h"

namespace model {
namespace {

// Makes the steps, and does them on a model to know what is in the list.
class Planner {
public:
    Planner(Flavour flavour, uint64_t seed) : _flavour(flavour), _random(seed) {
        const size_t count = _random.between(6, flavour == Flavour::longAddresses ? 70 : 40);
        while (_pool.size() < count)
            _pool.push_back(newAddress());
    }

    Sequence plan() {
        Sequence sequence;
        const size_t count = _random.between(6, 24);
        if (_flavour == Flavour::strangeValues) {
            for (size_t values = _random.between(1, 5); values-- > 0;)
                addTo(sequence, overwriting());
            addTo(sequence, reopening());
        }
        while (sequence.size() < count)
            addTo(sequence, anyStep());
        if (_isStale) addTo(sequence, reopening());
        sequence.back().subjects = subjects();
        return sequence;
    }

private:
    std::string newAddress() {
        switch (_flavour) {
            case Flavour::longAddresses:
                return longAddress(_random.inPercent(3) ? _random.between(505, 515) : _random.between(100, 500),
                                   _random);
            case Flavour::wildcards:
                return _random.inPercent(70) ? wildcardPattern(_random) : shortAddress(_random);
            case Flavour::strangeValues:
                if (_random.inPercent(30)) return unusualPattern(_random);
                if (_random.inPercent(30)) return longAddress(_random.between(100, 520), _random);
                return shortAddress(_random);
            default:
                return _random.inPercent(10) ? longAddress(_random.between(100, 500), _random) : shortAddress(_random);
        }
    }

    std::string someAddress() {
        const size_t choice = _random.below(100);
        if (choice < 75) return _random.pick(_pool);
        if (choice < 90) return variantOf(_random.pick(_pool), _random);
        return newAddress();
    }

    // An address that fills the last value to the last byte, or is one byte too long for that.
    std::string fittingAddress() {
        if (_model.images().empty()) return someAddress();
        const size_t free = 2048 - std::min<size_t>(2048, _model.images().rbegin()->second.size());
        const size_t length = free + _random.below(2);
        if (length < 6 || length > 512) return someAddress();
        return longAddress(length - 1, _random);
    }

    // An address whose value is about to become sparse without it, else any that is stored.
    std::string storedAddress() {
        Addresses all, decisive;
        for (const auto& [number, image] : _model.images()) {
            for (const std::string& address : addressesOf(image)) {
                all.push_back(address);
                const size_t rest = image.size() - address.size() - 1;
                if (rest >= 1360 && rest <= 1366) decisive.push_back(address);
            }
        }
        if (all.empty()) return someAddress();
        return _random.pick(decisive.empty() ? all : decisive);
    }

    std::string addressToRemove() {
        const size_t choice = _random.below(100);
        if (choice < 65) return storedAddress();
        return choice < 80 ? variantOf(storedAddress(), _random) : someAddress();
    }

    size_t arraySize() {
        if (_random.inPercent(2)) return 0;
        if (_random.inPercent(40)) return 1;
        return _random.between(2, _flavour == Flavour::longAddresses ? 20 : 12);
    }

    Step inserting() {
        Step step;
        for (size_t count = arraySize(); count-- > 0;)
            step.addresses.push_back(_random.inPercent(8) ? fittingAddress() : someAddress());
        return step;
    }

    Step removing() {
        Step step;
        step.kind = Step::Kind::remove;
        for (size_t count = arraySize(); count-- > 0;)
            step.addresses.push_back(addressToRemove());
        return step;
    }

    std::string line(uint32_t format) {
        static const std::vector<std::string> heads = {
            "mail: ", "MAIL:", "rfc822mailbox: ", "Rfc822MailBox\t:  ", "cn: ", "mail", ": ", "mails: "};
        static const std::vector<std::string> ends = {"\n", "\n", "\n", "\r\n", " \t\n", "\n\n \n", "\r", ""};
        std::string text = _random.inPercent(8) ? longAddress(_random.between(490, 530), _random) : someAddress();
        if (_random.inPercent(4)) text += std::string(_random.between(1, 540), ' ');
        if (format == 1 || _random.inPercent(3)) text = _random.pick(heads) + text;
        return std::string(_random.below(3) / 2, ' ') + text + _random.pick(ends);
    }

    Step importing() {
        Step step;
        step.kind = Step::Kind::import;
        step.format = _random.inPercent(30) ? 1 : 0;
        step.replace = _random.inPercent(30) ? 1 : 0;
        if (_random.inPercent(2)) step.format = 2;
        if (_random.inPercent(2)) step.replace = 2;
        for (size_t lines = _random.inPercent(5) ? 0 : _random.between(1, 30); lines-- > 0;)
            step.text += line(step.format);
        return step;
    }

    Step overwriting() {
        Step step;
        step.kind = Step::Kind::overwrite;
        const size_t values = _model.images().size();
        step.number = static_cast<unsigned>(_random.between(1, values + (_random.inPercent(20) ? 3 : 1)));
        if (_random.inPercent(85)) step.text = strangeImage();
        const auto present = _model.images().find(step.number);
        const std::string before = present == _model.images().end() ? "" : present->second;
        if (step.text == before) step.text = imageOf({"changed@x" + std::to_string(++_changes)});
        return step;
    }

    std::string strangeImage() {
        Addresses addresses;
        size_t length = 1;
        for (size_t count = _random.below(25); count-- > 0;) {
            const std::string address = _random.inPercent(50) ? newAddress() : someAddress();
            if (address.empty() && !_random.inPercent(5)) continue;
            length += address.size() + 1;
            if (length > 2048) break;
            addresses.push_back(address);
        }
        return imageOf(addresses);
    }

    static Step reopening() {
        Step step;
        step.kind = Step::Kind::reopen;
        return step;
    }

    Step anyStep() {
        const size_t choice = _random.below(100);
        if (_flavour == Flavour::imports && choice < 40) return importing();
        if (choice < 46) return inserting();
        if (choice < 86) return removing();
        if (choice < 90) return importing();
        if (choice < (_flavour == Flavour::strangeValues ? 94u : 91u)) return overwriting();
        if (choice < 98) return reopening();
        Step step;
        step.kind = Step::Kind::recreate;
        return step;
    }

    Addresses subjects() {
        Addresses found;
        for (size_t count = _random.between(2, 8); count-- > 0;)
            found.push_back(subjectFor(_pool, _random));
        if (_model.cache().size() > 0)
            found.push_back(*_model.cache().inUserOrder(_random.below(_model.cache().size())));
        return found;
    }

    // Completes a step and does it.
    void addTo(Sequence& sequence, Step step) {
        step.isBySecondObject = _random.inPercent(30);
        switch (step.kind) {
            case Step::Kind::insert:
                refill();
                _model.insert(step.addresses);
                break;
            case Step::Kind::remove:
                refill();
                _model.remove(step.addresses);
                break;
            case Step::Kind::import:
                refill();
                _model.importText(step.text, step.format, step.replace);
                break;
            case Step::Kind::overwrite:
                _model.setImage(step.number, step.text);
                _isStale = true;
                break;
            case Step::Kind::reopen:
                refill();
                break;
            case Step::Kind::recreate:
                _model = ListModel();
                _isStale = false;
                break;
        }
        if (!_isStale && _random.inPercent(35)) step.subjects = subjects();
        sequence.push_back(std::move(step));
    }

    void refill() {
        if (_isStale || _model.isOutOfStep()) _model.fillCache();
        _isStale = false;
    }

    const Flavour _flavour;
    RandomSource _random;
    Addresses _pool;
    ListModel _model;
    bool _isStale = false;
    unsigned _changes = 0;
};

std::string quoted(const std::string& text) {
    static const char* const digits = "0123456789abcdef";
    std::string shown = "\"";
    for (const char c : text) {
        const auto byte = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            shown += std::string("\\") + c;
        else if (c == '\n')
            shown += "\\n";
        else if (byte < ' ' || byte > '~')
            shown += std::string("\\x") + digits[byte / 16] + digits[byte % 16];
        else
            shown += c;
    }
    return shown + "\"";
}

std::string quoted(const Addresses& addresses) {
    std::string shown;
    for (const std::string& address : addresses)
        shown += " " + quoted(address);
    return shown;
}

}  // namespace

Sequence sequenceOf(Flavour flavour, uint64_t seed) {
    return Planner(flavour, seed).plan();
}

std::string traceOf(const Sequence& sequence) {
    std::string trace;
    for (const Step& step : sequence) {
        trace += step.isBySecondObject ? "  2nd " : "  1st ";
        switch (step.kind) {
            case Step::Kind::insert:
                trace += "insert" + quoted(step.addresses);
                break;
            case Step::Kind::remove:
                trace += "remove" + quoted(step.addresses);
                break;
            case Step::Kind::import:
                trace += "import " + std::to_string(step.format) + " " + std::to_string(step.replace) + " " +
                         quoted(step.text);
                break;
            case Step::Kind::overwrite:
                trace += "overwrite " + std::to_string(step.number) + " " + quoted(step.text);
                break;
            case Step::Kind::reopen:
                trace += "reopen";
                break;
            case Step::Kind::recreate:
                trace += "recreate";
                break;
        }
        trace += step.subjects.empty() ? "\n" : "\n      match" + quoted(step.subjects) + "\n";
    }
    return trace;
}

}  // namespace model
