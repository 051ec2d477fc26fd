#include "media/SoundConversion.h"

#include <array>
#include <cstddef>
#include <cstdint>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
#include <libswresample/swresample.h>
}

#include "platform/Sound.h"

namespace morvelin {

namespace {

bool haveOneForm(const AVFrame& a, const AVFrame& b) {
    return a.format == b.format && a.sample_rate == b.sample_rate &&
           av_channel_layout_compare(&a.ch_layout, &b.ch_layout) == 0;
}

} // namespace

bool SoundConverter::prepareFor(const AVFrame& frame) {
    AVChannelLayout stereo{};
    av_channel_layout_default(&stereo, kSoundChannels);
    // Files may name no layout, only how many channels there are.
    AVChannelLayout layout{};
    if (frame.ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
        av_channel_layout_default(&layout, frame.ch_layout.nb_channels);
    else
        av_channel_layout_copy(&layout, &frame.ch_layout);
    SwrContext* resampler = nullptr;
    swr_alloc_set_opts2(&resampler, &stereo, AV_SAMPLE_FMT_FLT, kSoundRate, &layout,
                        static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
    m_resampler.reset(resampler);
    // One channel is heard from both sides as loud as it is; FFmpeg would make each side softer.
    constexpr std::array<double, kSoundChannels> kBothSides{1, 1};
    if (resampler != nullptr && layout.nb_channels == 1) swr_set_matrix(resampler, kBothSides.data(), 1);
    av_channel_layout_uninit(&layout);
    if (resampler == nullptr || swr_init(resampler) < 0) {
        reset();
        return false;
    }
    m_form = newFrame();
    m_form->format = frame.format;
    m_form->sample_rate = frame.sample_rate;
    av_channel_layout_copy(&m_form->ch_layout, &frame.ch_layout);
    return true;
}

bool SoundConverter::convert(const AVFrame& frame, int first, std::vector<float>& samples) {
    if (m_resampler != nullptr && !haveOneForm(frame, *m_form)) drain(samples);
    if (m_resampler == nullptr && !prepareFor(frame)) return false;
    const auto format = static_cast<AVSampleFormat>(frame.format);
    const int channels = frame.ch_layout.nb_channels;
    const bool isPlanar = av_sample_fmt_is_planar(format) != 0;
    const int step = av_get_bytes_per_sample(format) * (isPlanar ? 1 : channels);
    std::vector<const std::uint8_t*> planes;
    for (int plane = 0; plane < (isPlanar ? channels : 1); ++plane)
        planes.push_back(frame.extended_data[plane] + static_cast<std::ptrdiff_t>(first) * step);
    append(planes.data(), frame.nb_samples - first, samples);
    return true;
}

void SoundConverter::drain(std::vector<float>& samples) {
    if (m_resampler != nullptr) append(nullptr, 0, samples);
    reset();
}

void SoundConverter::append(const std::uint8_t** planes, int count, std::vector<float>& samples) {
    const int capacity = swr_get_out_samples(m_resampler.get(), count);
    if (capacity <= 0) return;
    const std::size_t before = samples.size();
    samples.resize(before + static_cast<std::size_t>(capacity) * kSoundChannels);
    auto* out = reinterpret_cast<std::uint8_t*>(samples.data() + before);
    const int made = swr_convert(m_resampler.get(), &out, capacity, planes, count);
    samples.resize(before + static_cast<std::size_t>(made > 0 ? made : 0) * kSoundChannels);
}

} // namespace morvelin
