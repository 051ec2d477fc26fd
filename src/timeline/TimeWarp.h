// Where the moments of an edit go when fragments are cut, brought back or played at another speed.
#pragma once

#include <vector>

#include "core/base/Time.h"

namespace morvelin {

class FragmentMap;

/// A rising, piecewise straight map from the edit timeline before a change to the one after it. A value; every look-up
/// takes O(log n). Moments outside the timeline keep their distance from its nearer end.
class TimeWarp {
public:
    /// The span [`from`, `to`) goes, and what follows it moves up.
    [[nodiscard]] static TimeWarp removal(EditTime from, EditTime to, Seconds duration);
    /// What begins at `at` or later moves back by `length`.
    [[nodiscard]] static TimeWarp insertion(EditTime at, Seconds length, Seconds duration);
    /// The same fragments in the same places, some at another speed.
    [[nodiscard]] static TimeWarp retiming(const FragmentMap& before, const FragmentMap& after);

    /// A moment that belongs to what follows it: where footage is brought back, it moves behind that.
    [[nodiscard]] EditTime at(EditTime t) const;
    /// A moment that belongs to what precedes it: where footage is brought back, it stays before that.
    [[nodiscard]] EditTime endAt(EditTime t) const;
    [[nodiscard]] bool isRemoved(EditTime t) const;

    /// All before this moment stays as it is.
    [[nodiscard]] EditTime changesFrom() const;
    [[nodiscard]] EditTime newEnd() const;

private:
    struct Stretch {
        EditTime from, to;
        EditTime newFrom, newTo;
    };

    explicit TimeWarp(std::vector<Stretch> stretches) : m_stretches(std::move(stretches)) {}
    static EditTime through(const Stretch& stretch, EditTime t);
    [[nodiscard]] const Stretch& holding(EditTime t) const;

    std::vector<Stretch> m_stretches; ///< end to end in the time before; never empty
};

} // namespace morvelin
