#include "media/X264Encoder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <utility>

#include <fmt/core.h>
#include <x264.h>

#include "core/base/Text.h"
#include "media/TakeRate.h"
#include "media/UnchangedBlocks.h"

namespace morvelin {

namespace {

/// One thread keeps up with about this many pixels a second in real time, with room to spare.
constexpr double kPixelsPerThread = 1920.0 * 1080 * 60 * 1.25;

int threadsInRealTime(const VideoEncoderSettings& settings) {
    if (settings.threads > 0) return settings.threads;
    const int cores = std::max(1, static_cast<int>(std::thread::hardware_concurrency()));
    const double pixels = static_cast<double>(settings.size.width) * settings.size.height * settings.frameRate;
    return std::clamp(static_cast<int>(std::ceil(pixels / kPixelsPerThread)), 1, cores);
}

/// A take: the cheapest analysis there is. At the bit rates of a take the quantiser stays at its floor, so a better
/// preset would make a smaller file of the same quality, for twice the work. Each frame comes with its quantiser.
void setRealTime(x264_param_t& parameters, const VideoEncoderSettings& settings) {
    x264_param_default_preset(&parameters, "ultrafast", "zerolatency");
    parameters.i_threads = threadsInRealTime(settings);
    parameters.rc.i_rc_method = X264_RC_CQP;
    parameters.rc.i_qp_constant = kQuantizerFloor;
    // The encoder holds each frame's quantiser within those that these factors would give to I- and B-frames, 6 steps to
    // a factor of 2: they open the range from the floor to the coarsest and mean nothing else, as each frame has its own.
    parameters.rc.f_ip_factor = 1.0F / 64;
    parameters.rc.f_pb_factor = 1;
}

/// An export. B-frames and look-ahead would part a frame from the one just before it, which the map speaks of. Each
/// frame comes with its quantiser here too, but a method of rate control must be chosen all the same: without one the
/// encoder would not give flat areas, where an eye sees most, the finer quantisers that they need.
void setOffline(x264_param_t& parameters) {
    x264_param_default_preset(&parameters, "superfast", nullptr);
    parameters.i_threads = 1;
    parameters.b_stitchable = 1;
    parameters.i_bframe = 0;
    parameters.i_scenecut_threshold = 0;
    parameters.i_sync_lookahead = 0;
    parameters.rc.i_lookahead = 0;
    parameters.rc.b_mb_tree = 0;
    parameters.rc.i_rc_method = X264_RC_CRF;
}

void setColour(x264_param_t& parameters, MovieSettings::Transfer transfer) {
    constexpr int kBT709 = 1;
    constexpr int kSRGB = 13;
    parameters.vui.b_fullrange = 0;
    parameters.vui.i_colorprim = kBT709;
    parameters.vui.i_colmatrix = kBT709;
    parameters.vui.i_transfer = transfer == MovieSettings::Transfer::SRGB ? kSRGB : kBT709;
}

void setTimes(x264_param_t& parameters, const VideoEncoderSettings& settings) {
    const Rational rate = exactFrameRate(settings.frameRate);
    parameters.i_fps_num = static_cast<std::uint32_t>(rate.numerator);
    parameters.i_fps_den = static_cast<std::uint32_t>(rate.denominator);
    // To the encoder frames are numbers: for times it would hold each frame back until it knows how long it lasts.
    parameters.b_vfr_input = 0;
    // Which frames are key frames is told with each of them.
    parameters.i_keyint_max = X264_KEYINT_MAX_INFINITE;
    parameters.i_keyint_min = 1;
}

x264_param_t parametersOf(const VideoEncoderSettings& settings) {
    x264_param_t parameters;
    switch (settings.pace) {
    case MovieSettings::Pace::RealTime: setRealTime(parameters, settings); break;
    case MovieSettings::Pace::Offline: setOffline(parameters); break;
    }
    parameters.i_width = settings.size.width;
    parameters.i_height = settings.size.height;
    parameters.i_csp = X264_CSP_I420;
    parameters.b_annexb = 1;
    parameters.b_repeat_headers = 0;
    parameters.analyse.b_mb_info = 1;
    parameters.analyse.i_weighted_pred = X264_WEIGHTP_NONE; // a weighted frame would not use the map
    setColour(parameters, settings.transfer);
    setTimes(parameters, settings);
    x264_param_apply_profile(&parameters, "high");
    return parameters;
}

void keepComplaint(void* last, int level, const char* format, std::va_list arguments) {
    if (level > X264_LOG_ERROR) return;
    std::array<char, 300> text{};
    (void)std::vsnprintf(text.data(), text.size(), format, arguments);
    *static_cast<std::string*>(last) = trimmed(text.data());
}

x264_picture_t viewOf(const Picture& picture, std::int64_t number) {
    x264_picture_t view;
    x264_picture_init(&view);
    view.img.i_csp = X264_CSP_I420;
    view.img.i_plane = 3;
    for (int index = 0; index < 3; ++index) {
        const PlaneView<const std::uint8_t> plane = picture.plane(index);
        view.img.plane[index] = const_cast<std::uint8_t*>(plane.data); // the API reads it only
        view.img.i_stride[index] = static_cast<int>(plane.stride);
    }
    view.i_pts = number;
    return view;
}

/// The encoder keeps the map as long as it works on the frame and then frees it itself.
void attachMap(x264_picture_t& view, PixelSize size, std::span<const PixelBox> changed) {
    const PixelSize blocks = sizeInBlocks(size);
    const auto count = static_cast<std::size_t>(blocks.width) * static_cast<std::size_t>(blocks.height);
    auto* map = static_cast<std::uint8_t*>(std::malloc(count));
    if (map == nullptr) return; // the map only saves work
    markUnchangedBlocks({map, count}, size, changed, X264_MBINFO_CONSTANT);
    view.prop.mb_info = map;
    view.prop.mb_info_free = &std::free;
}

} // namespace

void X264Encoder::Close::operator()(x264_t* encoder) const { x264_encoder_close(encoder); }

X264Encoder::X264Encoder(const VideoEncoderSettings& settings, std::unique_ptr<RateControl> rate)
    : m_settings(settings),
      m_rate(std::move(rate)),
      m_lastComplaint(std::make_unique<std::string>()),
      m_keyFrameTicks(std::llround(settings.keyFrameInterval.value / settings.timeBase().value())) {}

Result<std::unique_ptr<X264Encoder>, MovieWriterError> X264Encoder::create(const VideoEncoderSettings& settings,
                                                                           std::unique_ptr<RateControl> rate) {
    std::unique_ptr<X264Encoder> encoder(new X264Encoder(settings, std::move(rate)));
    if (auto opened = encoder->open(); !opened) return passOn(std::move(opened));
    return encoder;
}

Result<void, MovieWriterError> X264Encoder::open() {
    x264_param_t parameters = parametersOf(m_settings);
    parameters.pf_log = &keepComplaint;
    parameters.p_log_private = m_lastComplaint.get();
    m_encoder.reset(x264_encoder_open(&parameters));
    if (m_encoder == nullptr)
        return failure(complaint(MovieWriterError::Kind::NoEncoder, "The H.264 encoder could not be started"));
    return takeParameterSets();
}

Result<void, MovieWriterError> X264Encoder::takeParameterSets() {
    x264_nal_t* units = nullptr;
    int count = 0;
    if (x264_encoder_headers(m_encoder.get(), &units, &count) < 0)
        return failure(complaint(MovieWriterError::Kind::NoEncoder, "The H.264 encoder could not be started"));
    constexpr int kStartCode = 4;
    for (const x264_nal_t& unit : std::span(units, static_cast<std::size_t>(count))) {
        const std::span payload(unit.p_payload, static_cast<std::size_t>(unit.i_payload));
        if (unit.i_type != NAL_SPS && unit.i_type != NAL_PPS) continue;
        m_parameterSets.insert(m_parameterSets.end(), payload.begin(), payload.end());
        if (unit.i_type == NAL_SPS && m_settings.pace == MovieSettings::Pace::Offline)
            m_repeats = RepeatedFrames::forStream(payload.subspan(kStartCode), m_settings.size);
    }
    if (m_repeats) {
        const std::vector<std::uint8_t> set = RepeatedFrames::pictureParameters();
        m_parameterSets.insert(m_parameterSets.end(), set.begin(), set.end());
    }
    return {};
}

/// Counting frames would let a key frame wait for minutes on a screen that seldom changes.
bool X264Encoder::keyFrameIsDue(std::int64_t time) const {
    return !m_lastKeyFrame || time - *m_lastKeyFrame >= m_keyFrameTicks;
}

Result<void, MovieWriterError> X264Encoder::encode(const Picture& picture, std::int64_t time,
                                                   std::span<const PixelBox> changed, const PacketSink& sink) {
    const bool isKeyFrame = keyFrameIsDue(time);
    if (m_repeats && !isKeyFrame && changed.empty()) {
        m_frame = m_repeats->repeat();
        m_rate->add(8 * static_cast<std::int64_t>(m_frame.size()));
        return sink({.bytes = m_frame, .presentationTime = time, .decodingTime = time});
    }
    x264_picture_t view = viewOf(picture, m_codedFrames);
    ++m_codedFrames;
    const double seconds = static_cast<double>(time) * m_settings.timeBase().value();
    view.i_qpplus1 = m_rate->quantizerAt(seconds, isKeyFrame) + 1;
    if (isKeyFrame) {
        view.i_type = X264_TYPE_IDR;
        m_lastKeyFrame = time;
    } else {
        attachMap(view, m_settings.size, changed);
    }

    x264_nal_t* units = nullptr;
    int count = 0;
    x264_picture_t coded;
    if (x264_encoder_encode(m_encoder.get(), &units, &count, &view, &coded) <= 0)
        return failure(complaint(MovieWriterError::Kind::EncodingFailed, "A frame could not be encoded"));
    const auto frame = frameOf({units, static_cast<std::size_t>(count)}, isKeyFrame);
    m_rate->add(8 * static_cast<std::int64_t>(frame.size()));
    return sink({.bytes = frame, .presentationTime = time, .decodingTime = time, .isKeyFrame = isKeyFrame});
}

/// The payloads of one frame's units lie one after the other.
std::span<const std::uint8_t> X264Encoder::frameOf(std::span<const x264_nal_t> units, bool isKeyFrame) {
    if (!m_repeats) {
        const x264_nal_t& last = units.back();
        return {units.front().p_payload, last.p_payload + last.i_payload};
    }
    m_frame.clear();
    m_repeats->beginFrame(isKeyFrame);
    for (const x264_nal_t& unit : units) {
        const std::span payload(unit.p_payload, static_cast<std::size_t>(unit.i_payload));
        m_repeats->appendUnit(payload.subspan(unit.b_long_startcode != 0 ? 4 : 3), m_frame);
    }
    return m_frame;
}

MovieWriterError X264Encoder::complaint(MovieWriterError::Kind kind, const char* sentence) const {
    if (m_lastComplaint->empty()) return {kind, fmt::format("{}.", sentence), 0};
    return {kind, fmt::format("{}: {}.", sentence, *m_lastComplaint), 0};
}

} // namespace morvelin
