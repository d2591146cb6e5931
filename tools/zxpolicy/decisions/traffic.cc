#include "decisions/traffic.h"

#include <ostream>

#include "output/text.h"

namespace tool {

bool Traffic::next(Envelope& envelope) {
    for (;;) {
        try {
            return _reader.next(envelope);
        } catch (const BadLine& bad) {
            ++_badLines;
            if (_first.size() < _keptLines) _first.push_back(bad);
        }
    }
}

void Traffic::printBadLines(std::ostream& out) const {
    if (_badLines == 0) return;
    out << '\n' << counted(_badLines, "bad line") << " passed over\n";
    for (const BadLine& bad : _first)
        out << "  line " << bad.line() << ": " << bad.fault() << '\n';
    if (_badLines > _first.size() && !_first.empty())
        out << "  and " << grouped(_badLines - _first.size()) << " more\n";
}

Json Traffic::badLinesJson() const {
    Json first = Json::array();
    for (const BadLine& bad : _first)
        first.add(Json::object({{"line", bad.line()}, {"fault", bad.fault()}}));
    return Json::object({{"count", _badLines}, {"first", first}});
}

}  // namespace tool
