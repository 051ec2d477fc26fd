// One kept span of the recording, and the recording's own sound under it.
#pragma once

#include <optional>
#include <vector>

#include "core/base/Identity.h"
#include "core/base/JSON.h"
#include "core/base/Time.h"

namespace morvelin {

/// How a fragment's sound has been moved, trimmed or removed against its picture.
struct FragmentAudio {
    Seconds shift;                   ///< source time by which the sound is moved
    std::optional<SourceTime> start; ///< absent means the fragment's own start
    std::optional<SourceTime> end;   ///< absent means the fragment's own end
    bool isRemoved = false;

    bool operator==(const FragmentAudio&) const = default;
};

template <class Fields>
void describe(Fields& fields, Same<Fields, FragmentAudio>& audio) {
    fields.required("shift", audio.shift);
    fields.optional("start", audio.start);
    fields.optional("end", audio.end);
    fields.required("isRemoved", audio.isRemoved);
}

/// One kept span of the recording, played at one speed.
struct VideoFragment {
    UUID id;
    SourceTime sourceStart;
    SourceTime sourceEnd;
    double speed = 1;
    std::int64_t order = 0; ///< place on the timeline, ascending from 0
    std::optional<FragmentAudio> audio;

    bool operator==(const VideoFragment&) const = default;

    /// The fragment's length on the edit timeline; 0 where `speed` is not above 0.
    [[nodiscard]] Seconds length() const {
        return speed > 0 ? std::max(sourceEnd - sourceStart, Seconds(0)) / speed : Seconds(0);
    }

    /// The one fragment of an unedited recording.
    [[nodiscard]] static VideoFragment whole(Seconds duration, IdSource& ids) {
        return VideoFragment{ids.next(), SourceTime(0), SourceTime(duration), 1, 0, std::nullopt};
    }
};

template <class Fields>
void describe(Fields& fields, Same<Fields, VideoFragment>& fragment) {
    fields.required("id", fragment.id);
    fields.required("sourceStart", fragment.sourceStart);
    fields.required("sourceEnd", fragment.sourceEnd);
    fields.required("speed", fragment.speed);
    fields.required("order", fragment.order);
    fields.optional("audio", fragment.audio);
}

} // namespace morvelin
