#include "wav.h"

#include "whole_file.h"

#include <algorithm>

std::vector<int16_t> fit_sound(std::span<const int16_t> pairs, uint64_t first, uint64_t length)
{
    std::vector<int16_t> result(static_cast<size_t>(length * 2), 0);
    const uint64_t available = pairs.size() / 2;
    if (first < available) {
        const uint64_t count = std::min(length, available - first);
        std::copy_n(pairs.begin() + static_cast<std::ptrdiff_t>(first * 2), count * 2, result.begin());
    }
    return result;
}

std::vector<int16_t> fit_sound_to_frames(std::span<const int16_t> pairs, uint32_t samples_per_second,
    uint64_t first_frame, uint64_t end_frame, frame_rate rate)
{
    if (end_frame <= first_frame)
        return {};
    const uint64_t first = sample_of_frame(first_frame, rate, samples_per_second);
    return fit_sound(pairs, first, sample_of_frame(end_frame, rate, samples_per_second) - first);
}

static void put(std::vector<uint8_t>& bytes, const char* text)
{
    bytes.insert(bytes.end(), text, text + 4);
}

static void put(std::vector<uint8_t>& bytes, uint32_t value, uint32_t size)
{
    for (uint32_t i = 0; i < size; ++i)
        bytes.push_back(static_cast<uint8_t>(value >> (8 * i)));
}

std::vector<uint8_t> wav_header(uint64_t samples, uint32_t samples_per_second)
{
    constexpr uint32_t channels = 2;
    constexpr uint32_t sample_size = channels * 2; // bytes
    const uint32_t data_size = static_cast<uint32_t>(std::min(samples, wav_max_samples)) * sample_size;
    std::vector<uint8_t> bytes;
    bytes.reserve(wav_header_size);
    put(bytes, "RIFF");
    put(bytes, data_size + wav_header_size - 8, 4);
    put(bytes, "WAVE");
    put(bytes, "fmt ");
    put(bytes, 16, 4); // size of this part
    put(bytes, 1, 2);  // PCM
    put(bytes, channels, 2);
    put(bytes, samples_per_second, 4);
    put(bytes, samples_per_second * sample_size, 4);
    put(bytes, sample_size, 2);
    put(bytes, 16, 2); // bits
    put(bytes, "data");
    put(bytes, data_size, 4);
    return bytes;
}

bool write_wav(const std::string& path, std::span<const int16_t> pairs, uint32_t samples_per_second, std::string& error)
{
    const uint64_t samples = pairs.size() / 2;
    if (samples > wav_max_samples) {
        error = "cannot write \"" + path + "\": more than 4 GB of sound";
        return false;
    }
    std::vector<uint8_t> bytes = wav_header(samples, samples_per_second);
    bytes.reserve(bytes.size() + static_cast<size_t>(samples) * 4);
    for (const int16_t value : pairs.first(static_cast<size_t>(samples) * 2)) {
        const uint16_t bits = static_cast<uint16_t>(value);
        bytes.push_back(static_cast<uint8_t>(bits));
        bytes.push_back(static_cast<uint8_t>(bits >> 8));
    }
    return write_file(path, bytes, error);
}
