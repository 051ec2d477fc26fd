#include "media/FFmpegMuxer.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <new>
#include <system_error>
#include <utility>
#include <vector>

#include <fmt/core.h>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/opt.h>
}

#include "media/FragmentDuration.h"

namespace morvelin {

namespace {

constexpr int kBufferSize = 256 * 1024;
/// Fragments grow as the movie does, so that an early end costs about half of it at most.
constexpr Seconds kFirstFragment{0.1};
constexpr Seconds kLongestFragment{1};
constexpr std::int64_t kFirstFragmentBytes = 64 * 1024;

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
    const std::size_t size = format.parameterSets.size();
    parameters.extradata = static_cast<std::uint8_t*>(av_mallocz(size + AV_INPUT_BUFFER_PADDING_SIZE));
    if (parameters.extradata == nullptr) throw std::bad_alloc();
    std::memcpy(parameters.extradata, format.parameterSets.data(), size);
    parameters.extradata_size = static_cast<int>(size);
}

AVRational toAV(Rational rational) { return {rational.numerator, rational.denominator}; }

} // namespace

FFmpegMuxer::FFmpegMuxer(OutputFile file, MovieSettings::Container container, const VideoTrackFormat& format)
    : m_file(std::move(file)),
      m_container(container),
      m_timeBase(format.timeBase),
      m_frameTicks(std::max<std::int64_t>(1, std::llround(1 / (format.frameRate * format.timeBase.value())))),
      m_held(newPacket()) {}

FFmpegMuxer::~FFmpegMuxer() = default;

Result<std::unique_ptr<FFmpegMuxer>, MovieWriterError> FFmpegMuxer::create(const std::filesystem::path& path,
                                                                           MovieSettings::Container container,
                                                                           const VideoTrackFormat& format) {
    auto file = OutputFile::create(path);
    if (!file) return failure(creationError(path, file.error()));
    std::unique_ptr<FFmpegMuxer> muxer(new FFmpegMuxer(std::move(*file), container, format));
    int code = muxer->openContainer(format);
    if (code >= 0) code = muxer->writeHeader();
    if (auto opened = muxer->check(code); !opened) {
        std::error_code ignored;
        if (std::filesystem::is_regular_file(path, ignored)) std::filesystem::remove(path, ignored);
        return passOn(std::move(opened));
    }
    return muxer;
}

int FFmpegMuxer::openContainer(const VideoTrackFormat& format) {
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

    m_track = avformat_new_stream(output, nullptr);
    if (m_track == nullptr) throw std::bad_alloc();
    m_track->time_base = toAV(format.timeBase);
    m_track->avg_frame_rate = toAV(exactFrameRate(format.frameRate));
    setParameters(*m_track->codecpar, format);
    return 0;
}

int FFmpegMuxer::writeHeader() {
    AVDictionary* options = nullptr;
    if (isFragmented()) {
        // Fragments end where we say; each says by itself where its bytes and its times begin.
        av_dict_set(&options, "movflags", "+empty_moov+default_base_moof+frag_custom", 0);
        av_dict_set(&options, "use_editlist", "0", 0);
    } else {
        av_dict_set(&options, "movflags", "+faststart", 0);
    }
    const int code = avformat_write_header(m_output.get(), &options);
    av_dict_free(&options);
    if (code < 0) return code;
    avio_flush(m_io.get());
    m_committedSize = m_file.size();
    return 0;
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
    if (code >= 0 && isFragmented() && m_fragmentStart && (packet.isKeyFrame || holdsEnough(packet.decodingTime)))
        code = endFragment();
    if (auto checked = check(code); !checked) return checked;

    if (av_new_packet(m_held.get(), static_cast<int>(packet.bytes.size())) < 0) throw std::bad_alloc();
    std::ranges::copy(packet.bytes, m_held->data);
    m_held->pts = packet.presentationTime;
    m_held->dts = packet.decodingTime;
    if (packet.isKeyFrame) m_held->flags |= AV_PKT_FLAG_KEY;
    m_isHolding = true;
    return {};
}

Result<void, MovieWriterError> FFmpegMuxer::flushFragment() {
    if (m_error) return failure(*m_error);
    if (!isFragmented() || !m_isHolding) return {};
    const std::int64_t frameTime = m_held->dts;
    const std::int64_t fragmentOffset = m_committedSize;
    // Frames of one length share a single number in the file; the last one gets a number of its own, to be set right.
    const std::int64_t guess = m_fragmentStart && m_firstDuration == m_frameTicks ? m_frameTicks + 1 : m_frameTicks;
    int code = writeHeldPacket(guess);
    if (code >= 0) code = endFragment();
    if (code >= 0) code = noteGuess(frameTime, fragmentOffset);
    return check(code);
}

Result<void, MovieWriterError> FFmpegMuxer::finish(std::int64_t end) {
    if (m_error) {
        (void)m_file.sync(); // what was kept shall be safe; the error is already told
        return failure(*m_error);
    }
    int code = 0;
    if (isFragmented()) {
        code = completeFragments(end);
    } else {
        if (m_isHolding) code = writeHeldPacket(end - m_held->dts);
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
    if (code >= 0 && m_fragmentStart) code = endFragment();
    if (code < 0 || m_systemError != 0) return code;

    // The trailer is an index that makes seeking quick. The movie is whole without it: no reason to fail.
    code = av_write_trailer(m_output.get());
    avio_flush(m_io.get());
    if (code < 0 || m_systemError != 0) (void)m_file.truncate(m_committedSize);
    m_systemError = 0;
    return 0;
}

/// Whether the open fragment, which reaches to `end`, is as long or as large as all that is safe before it.
bool FFmpegMuxer::holdsEnough(std::int64_t end) const {
    const auto seconds = [this](std::int64_t ticks) {
        return Seconds(static_cast<double>(ticks) * m_timeBase.value());
    };
    const Seconds most = std::clamp(seconds(*m_fragmentStart), kFirstFragment, kLongestFragment);
    return seconds(end - *m_fragmentStart) >= most || m_fragmentBytes >= std::max(kFirstFragmentBytes, m_committedSize);
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
    av_packet_rescale_ts(m_held.get(), toAV(m_timeBase), m_track->time_base);
    const int code = av_write_frame(m_output.get(), m_held.get());
    av_packet_unref(m_held.get());
    return code;
}

int FFmpegMuxer::endFragment() {
    const int code = av_write_frame(m_output.get(), nullptr);
    avio_flush(m_io.get());
    if (code < 0 || m_systemError != 0) return code;
    m_committedSize = m_file.size();
    m_fragmentStart.reset();
    m_file.beginSync();
    return 0;
}

int FFmpegMuxer::noteGuess(std::int64_t frameTime, std::int64_t fragmentOffset) {
    std::vector<std::uint8_t> moof(8);
    if (const auto read = m_file.readAt(fragmentOffset, moof); !read) return AVERROR(read.error());
    const std::uint32_t size = static_cast<std::uint32_t>(moof[0]) << 24 | static_cast<std::uint32_t>(moof[1]) << 16 |
                               static_cast<std::uint32_t>(moof[2]) << 8 | moof[3];
    moof.resize(size);
    if (const auto read = m_file.readAt(fragmentOffset, moof); !read) return AVERROR(read.error());
    if (const auto offset = lastFrameDurationOffset(moof))
        m_guess = GuessedDuration{frameTime, fragmentOffset + static_cast<std::int64_t>(*offset)};
    return 0;
}

int FFmpegMuxer::correctGuess(std::int64_t nextFrameTime) {
    const std::int64_t ticks = std::max<std::int64_t>(1, nextFrameTime - m_guess->frameTime);
    const auto duration = static_cast<std::uint32_t>(av_rescale_q(ticks, toAV(m_timeBase), m_track->time_base));
    const std::array<std::uint8_t, 4> bytes{
        static_cast<std::uint8_t>(duration >> 24), static_cast<std::uint8_t>(duration >> 16 & 0xFF),
        static_cast<std::uint8_t>(duration >> 8 & 0xFF), static_cast<std::uint8_t>(duration & 0xFF)};
    const auto written = m_file.writeAt(m_guess->fileOffset, bytes);
    m_guess.reset();
    if (written) return 0;
    m_systemError = written.error();
    return AVERROR(written.error());
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
