#include "media/FFmpegMuxer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cmath>
#include <cstring>
#include <limits>
#include <new>
#include <system_error>
#include <utility>
#include <vector>

#include <fmt/core.h>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
}

#include "media/MovieBoxes.h"

namespace morvelin {

namespace {

constexpr int kBufferSize = 256 * 1024;
/// Fragments grow as the movie does, so that an early end costs about half of it at most.
constexpr Seconds kFirstFragment{0.1};
/// What a kill loses is this, and what is on its way through the encoder: together less than a second.
constexpr Seconds kLongestFragment{0.8};
constexpr std::int64_t kFirstFragmentBytes = 64 * 1024;
/// Sound lies in the file in stretches of this length, each behind its picture: a piece of the index for each.
constexpr Seconds kSoundStretch{0.5};
constexpr Seconds kAllTime{std::numeric_limits<double>::infinity()};

/// FFmpeg numbers the tracks in the order in which it gets them.
constexpr std::uint32_t kPictureTrack = 1;
constexpr std::uint32_t soundTrackID(std::size_t track) {
    return kPictureTrack + 1 + static_cast<std::uint32_t>(track);
}

const char* formatName(MovieSettings::Container container) {
    switch (container) {
    case MovieSettings::Container::FragmentedQuickTime: return "mov";
    case MovieSettings::Container::FastStartMPEG4: return "mp4";
    }
    return "mov";
}

std::string writingSentence(const std::filesystem::path& path, int systemError, int code) {
    const std::string name = path.filename().string();
    switch (systemError) {
    case ENOSPC:
    case EDQUOT: return fmt::format("The disk is full, so “{}” can't grow any further.", name);
    case EFBIG: return fmt::format("“{}” has reached the largest size that a file may have here.", name);
    case 0: return fmt::format("“{}” could not be written: {}.", name, ffmpegReason(code));
    default: return fmt::format("“{}” could not be written: {}.", name, std::generic_category().message(systemError));
    }
}

MovieWriterError creationError(const std::filesystem::path& path, int systemError) {
    return {MovieWriterError::Kind::CannotCreateFile,
            fmt::format("“{}” could not be created in “{}”: {}.", path.filename().string(), path.parent_path().string(),
                        std::generic_category().message(systemError)),
            systemError};
}

void setExtradata(AVCodecParameters& parameters, std::span<const std::uint8_t> bytes) {
    parameters.extradata = static_cast<std::uint8_t*>(av_mallocz(bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE));
    if (parameters.extradata == nullptr) throw std::bad_alloc();
    std::ranges::copy(bytes, parameters.extradata);
    parameters.extradata_size = static_cast<int>(bytes.size());
}

void setParameters(AVCodecParameters& parameters, const VideoTrackFormat& format) {
    parameters.codec_type = AVMEDIA_TYPE_VIDEO;
    parameters.codec_id = AV_CODEC_ID_H264;
    parameters.format = AV_PIX_FMT_YUV420P;
    parameters.width = format.size.width;
    parameters.height = format.size.height;
    parameters.color_range = AVCOL_RANGE_MPEG;
    parameters.color_primaries = AVCOL_PRI_BT709;
    parameters.color_space = AVCOL_SPC_BT709;
    parameters.color_trc = format.transfer == MovieSettings::Transfer::SRGB ? AVCOL_TRC_IEC61966_2_1 : AVCOL_TRC_BT709;
    setExtradata(parameters, format.parameterSets);
}

void setParameters(AVCodecParameters& parameters, const SoundTrackFormat& format) {
    parameters.codec_type = AVMEDIA_TYPE_AUDIO;
    parameters.codec_id = AV_CODEC_ID_AAC;
    parameters.format = AV_SAMPLE_FMT_FLTP;
    parameters.sample_rate = kSoundRate;
    parameters.bit_rate = format.bitRate;
    parameters.frame_size = format.packetLength;
    parameters.initial_padding = format.priming;
    av_channel_layout_default(&parameters.ch_layout, kSoundChannels);
    setExtradata(parameters, format.configuration);
}

AVRational toAV(Rational rational) { return {rational.numerator, rational.denominator}; }

std::int64_t bigEndian(std::span<const std::uint8_t, 4> bytes) {
    return std::int64_t{bytes[0]} << 24 | bytes[1] << 16 | bytes[2] << 8 | bytes[3];
}

/// The `moof` box that begins at this offset.
Result<std::vector<std::uint8_t>, int> readFragmentHeader(const OutputFile& file, std::int64_t offset) {
    std::array<std::uint8_t, 4> size{};
    if (auto read = file.readAt(offset, size); !read) return passOn(std::move(read));
    std::vector<std::uint8_t> header(static_cast<std::size_t>(bigEndian(size)));
    if (auto read = file.readAt(offset, header); !read) return passOn(std::move(read));
    return header;
}

} // namespace

FFmpegMuxer::FFmpegMuxer(OutputFile file, MovieSettings::Container container, const VideoTrackFormat& picture)
    : m_file(std::move(file)),
      m_container(container),
      m_timeBase(picture.timeBase),
      m_frameTicks(std::max<std::int64_t>(1, std::llround(1 / (picture.frameRate * picture.timeBase.value())))),
      m_held(newPacket()) {}

FFmpegMuxer::~FFmpegMuxer() = default;

Result<std::unique_ptr<FFmpegMuxer>, MovieWriterError> FFmpegMuxer::create(const std::filesystem::path& path,
                                                                           MovieSettings::Container container,
                                                                           const VideoTrackFormat& picture,
                                                                           std::span<const SoundTrackFormat> sound) {
    auto file = OutputFile::create(path);
    if (!file) return failure(creationError(path, file.error()));
    std::unique_ptr<FFmpegMuxer> muxer(new FFmpegMuxer(std::move(*file), container, picture));
    int code = muxer->openContainer(picture, sound);
    if (code >= 0) code = muxer->writeHeader(sound);
    if (auto opened = muxer->check(code); !opened) {
        std::error_code ignored;
        if (std::filesystem::is_regular_file(path, ignored)) std::filesystem::remove(path, ignored);
        return passOn(std::move(opened));
    }
    return muxer;
}

int FFmpegMuxer::openContainer(const VideoTrackFormat& picture, std::span<const SoundTrackFormat> sound) {
    AVFormatContext* output = nullptr;
    // The prefix keeps a colon in the path from being read as a protocol.
    const std::string url = "file:" + m_file.path().string();
    const int code = avformat_alloc_output_context2(&output, nullptr, formatName(m_container), url.c_str());
    if (code < 0) return code;
    m_output.reset(output);

    auto* buffer = static_cast<unsigned char*>(av_malloc(kBufferSize));
    if (buffer == nullptr) throw std::bad_alloc();
    m_io.reset(avio_alloc_context(buffer, kBufferSize, 1, this, nullptr, &writeCallback, &seekCallback));
    if (m_io == nullptr) throw std::bad_alloc();
    output->pb = m_io.get();
    output->flags |= AVFMT_FLAG_CUSTOM_IO | AVFMT_FLAG_BITEXACT;
    output->avoid_negative_ts = AVFMT_AVOID_NEG_TS_DISABLED;

    const auto addTrack = [output](const auto& format, AVRational timeBase) {
        AVStream* track = avformat_new_stream(output, nullptr);
        if (track == nullptr) throw std::bad_alloc();
        track->time_base = timeBase;
        setParameters(*track->codecpar, format);
        return track;
    };
    m_track = addTrack(picture, toAV(picture.timeBase));
    m_track->avg_frame_rate = toAV(exactFrameRate(picture.frameRate));
    // Fragments count from 0, priming included; the header says where it ends.
    for (const SoundTrackFormat& format : sound)
        m_sound.emplace_back(*addTrack(format, {1, kSoundRate}), isFragmented() ? format.priming : 0);
    return 0;
}

int FFmpegMuxer::writeHeader(std::span<const SoundTrackFormat> sound) {
    AVDictionary* options = nullptr;
    if (isFragmented()) {
        // Fragments end where we say; each says by itself where its bytes and its times begin.
        av_dict_set(&options, "movflags", "+empty_moov+default_base_moof+frag_custom", 0);
        av_dict_set(&options, "use_editlist", "0", 0);
    } else {
        av_dict_set(&options, "movflags", "+faststart", 0);
    }
    int code = avformat_write_header(m_output.get(), &options);
    av_dict_free(&options);
    if (code < 0) return code;
    avio_flush(m_io.get());
    if (isFragmented() && !sound.empty() && m_systemError == 0) code = writePriming(sound);
    m_committedSize = m_file.size();
    return code;
}

/// Says how much of each track of sound is priming, which FFmpeg leaves out of a header that comes before its samples.
int FFmpegMuxer::writePriming(std::span<const SoundTrackFormat> sound) {
    std::vector<std::uint8_t> header(static_cast<std::size_t>(m_file.size()));
    if (const auto read = m_file.readAt(0, header); !read) return AVERROR(read.error());
    for (std::size_t track = 0; track < sound.size(); ++track)
        header = withPriming(header, soundTrackID(track), static_cast<std::uint32_t>(sound[track].priming));
    avio_seek(m_io.get(), 0, SEEK_SET);
    avio_write(m_io.get(), header.data(), static_cast<int>(header.size()));
    avio_flush(m_io.get());
    return m_io->error;
}

int FFmpegMuxer::writeCallback(void* self, std::uint8_t* bytes, int count) {
    auto* muxer = static_cast<FFmpegMuxer*>(self);
    const auto written = muxer->m_file.writeAt(muxer->m_position, {bytes, static_cast<std::size_t>(count)});
    if (!written) {
        muxer->m_systemError = written.error();
        return AVERROR(written.error());
    }
    muxer->m_position += count;
    return count;
}

std::int64_t FFmpegMuxer::seekCallback(void* self, std::int64_t offset, int whence) {
    auto* muxer = static_cast<FFmpegMuxer*>(self);
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE: return muxer->m_file.size();
    case SEEK_SET: break;
    case SEEK_CUR: offset += muxer->m_position; break;
    case SEEK_END: offset += muxer->m_file.size(); break;
    default: return AVERROR(EINVAL);
    }
    if (offset < 0) return AVERROR(EINVAL);
    return muxer->m_position = offset;
}

Result<void, MovieWriterError> FFmpegMuxer::write(const EncodedPacket& packet) {
    if (m_error) return failure(*m_error);
    int code = 0;
    if (m_guess) code = correctGuess(packet.decodingTime);
    if (code >= 0 && m_isHolding) code = writeHeldPacket(packet.decodingTime - m_held->dts);
    if (code >= 0 && isFragmented() && m_fragmentStart && (packet.isKeyFrame || holdsEnough())) code = endFragment();
    if (auto checked = check(code); !checked) return checked;

    if (av_new_packet(m_held.get(), static_cast<int>(packet.bytes.size())) < 0) throw std::bad_alloc();
    std::ranges::copy(packet.bytes, m_held->data);
    m_held->pts = packet.presentationTime;
    m_held->dts = packet.decodingTime;
    if (packet.isKeyFrame) m_held->flags |= AV_PKT_FLAG_KEY;
    m_isHolding = true;
    return {};
}

Result<void, MovieWriterError> FFmpegMuxer::writeSound(std::size_t track, const EncodedSound& packet) {
    if (m_error) return failure(*m_error);
    m_sound.at(track).add(packet);
    return isFragmented() && holdsEnough() ? flushFragment() : Result<void, MovieWriterError>();
}

Result<void, MovieWriterError> FFmpegMuxer::flushFragment() {
    if (m_error) return failure(*m_error);
    return isFragmented() ? check(commitFragment()) : Result<void, MovieWriterError>();
}

/// Brings all that there is into the file, with a guess of how long the last picture lasts: at least as long as the
/// sound beside it.
int FFmpegMuxer::commitFragment() {
    if (!m_isHolding && !m_fragmentStart && !hasWaitingSound()) return 0;
    Seconds soundEnd;
    for (const SoundQueue& sound : m_sound) soundEnd = std::max(soundEnd, sound.end());
    if (!m_isHolding) {
        const int code = endFragment();
        if (code < 0 || !m_guess) return code;
        const std::int64_t heard = ticksOf(soundEnd) - m_guess->frameTime;
        return heard > m_guess->duration ? setGuess(heard) : 0;
    }
    const std::int64_t fragmentOffset = m_committedSize;
    const GuessedDuration guess{m_held->dts, std::max(m_frameTicks, ticksOf(soundEnd) - m_held->dts), 0};
    // The container would move a next frame that comes before the end of this one, so it hears of a tick. Frames of one
    // length share a single number in the file; the last one gets a number of its own, which is set right.
    int code = writeHeldPacket(m_fragmentStart && m_firstDuration == 1 ? 2 : 1);
    if (code >= 0) code = endFragment();
    if (code >= 0) code = guessDuration(guess, fragmentOffset);
    return code;
}

Result<void, MovieWriterError> FFmpegMuxer::finish(std::int64_t end) {
    if (m_error) {
        (void)m_file.sync(); // what was kept shall be safe; the error is already told
        return failure(*m_error);
    }
    for (SoundQueue& sound : m_sound) sound.cut(soundSamples(secondsOf(end)));
    int code = 0;
    if (isFragmented()) {
        code = completeFragments(end);
    } else {
        if (m_isHolding) code = writeHeldPacket(end - m_held->dts);
        if (code >= 0) code = writeWaitingSound(kAllTime);
        if (code >= 0) code = av_write_trailer(m_output.get());
        avio_flush(m_io.get());
    }
    if (auto checked = check(code); !checked) return checked;
    if (auto synced = m_file.sync(); !synced) {
        m_systemError = synced.error();
        return check(AVERROR(synced.error()));
    }
    return {};
}

int FFmpegMuxer::completeFragments(std::int64_t end) {
    int code = m_guess ? correctGuess(end) : 0;
    if (code >= 0 && m_isHolding) code = writeHeldPacket(end - m_held->dts);
    if (code >= 0 && (m_fragmentStart || hasWaitingSound())) code = endFragment();
    if (code >= 0) code = cutCommittedSound(secondsOf(end));
    if (code < 0 || m_systemError != 0) return code;

    // The trailer is an index that makes seeking quick. The movie is whole without it: no reason to fail.
    code = av_write_trailer(m_output.get());
    avio_flush(m_io.get());
    if (code < 0 || m_systemError != 0) (void)m_file.truncate(m_committedSize);
    m_systemError = 0;
    return 0;
}

Seconds FFmpegMuxer::secondsOf(std::int64_t ticks) const {
    return Seconds(static_cast<double>(ticks) * m_timeBase.value());
}

std::int64_t FFmpegMuxer::ticksOf(Seconds time) const { return std::llround(time.value / m_timeBase.value()); }

bool FFmpegMuxer::hasWaitingSound() const {
    return std::ranges::any_of(m_sound, [](const SoundQueue& sound) { return !sound.isEmpty(); });
}

/// Whether the open fragment, without the held frame, is as long or as large as all that is safe before it.
bool FFmpegMuxer::holdsEnough() const {
    const auto isLong = [](Seconds start, Seconds end) {
        return end - start >= std::clamp(start, kFirstFragment, kLongestFragment);
    };
    if (m_fragmentStart && isLong(secondsOf(*m_fragmentStart), secondsOf(m_fragmentEnd))) return true;
    std::int64_t bytes = m_fragmentBytes;
    for (const SoundQueue& sound : m_sound) {
        if (!sound.isEmpty() && isLong(sound.start(), sound.end())) return true;
        bytes += sound.bytes();
    }
    return bytes >= std::max(kFirstFragmentBytes, m_committedSize);
}

/// Hands the held frame to the container. It lasts at least one tick.
int FFmpegMuxer::writeHeldPacket(std::int64_t duration) {
    m_isHolding = false;
    if (!m_fragmentStart) {
        // Else the muxer would move the fragment to where it thought that the last one ended.
        if (isFragmented()) av_opt_set(m_output->priv_data, "movflags", "+frag_discont", 0);
        m_fragmentStart = m_held->dts;
        m_fragmentBytes = 0;
        m_firstDuration = duration;
    }
    m_held->duration = std::max<std::int64_t>(1, duration);
    m_held->stream_index = m_track->index;
    m_fragmentBytes += m_held->size;
    m_fragmentEnd = m_held->dts + m_held->duration;
    av_packet_rescale_ts(m_held.get(), toAV(m_timeBase), m_track->time_base);
    const int code = av_write_frame(m_output.get(), m_held.get());
    av_packet_unref(m_held.get());
    return code < 0 || isFragmented() ? code : writeWaitingSound(secondsOf(m_fragmentEnd));
}

/// Hands over the sound that starts before `time`, each track's once there is a stretch of it.
int FFmpegMuxer::writeWaitingSound(Seconds time) {
    for (SoundQueue& sound : m_sound) {
        if (sound.start() + kSoundStretch > time) continue;
        if (const int code = sound.write(*m_output, time); code < 0) return code;
    }
    return 0;
}

int FFmpegMuxer::endFragment() {
    int code = writeWaitingSound(kAllTime);
    if (code >= 0) code = av_write_frame(m_output.get(), nullptr);
    avio_flush(m_io.get());
    if (code < 0 || m_systemError != 0) return code;
    m_fragments.push_back(m_committedSize);
    m_committedSize = m_file.size();
    m_fragmentStart.reset();
    m_fragmentBytes = 0;
    m_file.beginSync();
    return 0;
}

int FFmpegMuxer::guessDuration(GuessedDuration guess, std::int64_t fragmentOffset) {
    auto fragment = readFragmentHeader(m_file, fragmentOffset);
    if (!fragment) return AVERROR(fragment.error());
    if (const auto offset = lastFrameDurationOffset(*fragment, kPictureTrack)) {
        guess.fileOffset = fragmentOffset + static_cast<std::int64_t>(*offset);
        m_guess = guess;
        return setGuess(guess.duration);
    }
    return 0;
}

int FFmpegMuxer::correctGuess(std::int64_t nextFrameTime) {
    const int code = setGuess(std::max<std::int64_t>(1, nextFrameTime - m_guess->frameTime));
    m_guess.reset();
    return code;
}

int FFmpegMuxer::setGuess(std::int64_t duration) {
    m_guess->duration = duration;
    const auto ticks = static_cast<std::uint32_t>(av_rescale_q(duration, toAV(m_timeBase), m_track->time_base));
    const std::array<std::uint8_t, 4> bytes{
        static_cast<std::uint8_t>(ticks >> 24), static_cast<std::uint8_t>(ticks >> 16 & 0xFF),
        static_cast<std::uint8_t>(ticks >> 8 & 0xFF), static_cast<std::uint8_t>(ticks & 0xFF)};
    const auto written = m_file.writeAt(m_guess->fileOffset, bytes);
    if (written) return 0;
    m_systemError = written.error();
    return AVERROR(written.error());
}

/// Takes back what went into the file of sound that has turned out to lie behind the movie's end.
int FFmpegMuxer::cutCommittedSound(Seconds end) {
    for (std::size_t track = 0; track < m_sound.size(); ++track) {
        if (m_sound[track].end() <= end) continue;
        const auto ticks = static_cast<std::uint64_t>(soundSamples(end) + m_sound[track].shift());
        for (const std::int64_t offset : m_fragments) {
            auto fragment = readFragmentHeader(m_file, offset);
            if (!fragment) return AVERROR(fragment.error());
            if (!cutTrack(*fragment, soundTrackID(track), ticks)) continue;
            if (const auto written = m_file.writeAt(offset, *fragment); !written) {
                m_systemError = written.error();
                return AVERROR(written.error());
            }
        }
    }
    return 0;
}

/// Turns the outcome of a step into a result. After a failure the file holds whole fragments only, and nothing more is
/// written to it.
Result<void, MovieWriterError> FFmpegMuxer::check(int code) {
    if (code >= 0 && m_systemError == 0) return {};
    m_error = MovieWriterError{MovieWriterError::Kind::WritingFailed,
                               writingSentence(m_file.path(), m_systemError, code), m_systemError};
    if (isFragmented()) (void)m_file.truncate(m_committedSize);
    return failure(*m_error);
}

} // namespace morvelin
