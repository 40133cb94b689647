#pragma once

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <vector>

// Measures of a rendered recording, written for clearness and not for speed.
namespace recordings_test {

inline constexpr double kFramesPerMs = 96.0;
inline constexpr double kRateHz = 96000.0;
inline constexpr std::size_t kHeaderBytes = 44;

using Bytes = std::vector<unsigned char>;
using Signal = std::vector<float>;

inline Bytes readBytes(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary | std::ios::ate);
    Bytes bytes(file ? static_cast<std::size_t>(file.tellg()) : 0);
    file.seekg(0);
    file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

struct Recording {
    Bytes bytes;
    Signal left;
    Signal right;
    Signal mid; // half the sum

    explicit Recording(const std::filesystem::path& path) : bytes(readBytes(path)) {
        const std::size_t count =
            bytes.size() < kHeaderBytes ? 0 : (bytes.size() - kHeaderBytes) / 6;
        left.resize(count);
        right.resize(count);
        mid.resize(count);
        for (std::size_t frame = 0; frame < count; ++frame) {
            left[frame] = sampleAt(kHeaderBytes + 6 * frame);
            right[frame] = sampleAt(kHeaderBytes + 6 * frame + 3);
            mid[frame] = 0.5F * (left[frame] + right[frame]);
        }
    }

    std::size_t frames() const { return left.size(); }
    float level(std::size_t frame) const {
        return std::max(std::abs(left[frame]), std::abs(right[frame]));
    }
    float peak() const {
        float peak = 0.0F;
        for (std::size_t frame = 0; frame < frames(); ++frame) {
            peak = std::max(peak, level(frame));
        }
        return peak;
    }

private:
    float sampleAt(std::size_t at) const {
        const std::uint32_t high = (std::uint32_t{bytes[at]} << 8) |
                                   (std::uint32_t{bytes[at + 1]} << 16) |
                                   (std::uint32_t{bytes[at + 2]} << 24);
        return static_cast<float>(static_cast<std::int32_t>(high)) * 0x1.0p-31F;
    }
};

inline double decibels(double ratio) {
    return 20.0 * std::log10(std::max(ratio, 1e-30));
}

inline double dot(const Signal& a, const Signal& b) {
    double sum = 0.0;
    for (std::size_t frame = 0; frame < a.size(); ++frame) {
        sum += static_cast<double>(a[frame]) * static_cast<double>(b[frame]);
    }
    return sum;
}

// In place, size a power of two.
inline void fourier(std::vector<std::complex<double>>& bins) {
    const std::size_t size = bins.size();
    for (std::size_t at = 1, mirror = 0; at < size; ++at) {
        std::size_t bit = size >> 1;
        for (; (mirror & bit) != 0; bit >>= 1) {
            mirror ^= bit;
        }
        mirror ^= bit;
        if (at < mirror) {
            std::swap(bins[at], bins[mirror]);
        }
    }
    for (std::size_t span = 2; span <= size; span *= 2) {
        const auto turn = std::polar(1.0, -2.0 * std::acos(-1.0) / static_cast<double>(span));
        for (std::size_t start = 0; start < size; start += span) {
            std::complex<double> twiddle = 1.0;
            for (std::size_t at = start; at < start + span / 2; ++at) {
                const auto odd = bins[at + span / 2] * twiddle;
                bins[at + span / 2] = bins[at] - odd;
                bins[at] += odd;
                twiddle *= turn;
            }
        }
    }
}

// Power of each frequency, summed over half-overlapping Hann frames of [fromMs, toMs).
struct Spectrum {
    std::vector<double> power;
    double binHz;

    Spectrum(const Signal& signal, double fromMs, double toMs, std::size_t size = 2048)
        : power(size / 2), binHz(kRateHz / static_cast<double>(size)) {
        const auto last = std::min(signal.size(), static_cast<std::size_t>(toMs * kFramesPerMs));
        std::vector<std::complex<double>> bins(size);
        for (auto start = static_cast<std::size_t>(fromMs * kFramesPerMs); start + size <= last;
             start += size / 2) {
            for (std::size_t at = 0; at < size; ++at) {
                const double turn = static_cast<double>(at) / static_cast<double>(size);
                const double window = 0.5 - 0.5 * std::cos(2.0 * std::acos(-1.0) * turn);
                bins[at] = window * static_cast<double>(signal[start + at]);
            }
            fourier(bins);
            for (std::size_t bin = 0; bin < power.size(); ++bin) {
                power[bin] += std::norm(bins[bin]);
            }
        }
    }

    std::size_t binAt(double hz) const { return static_cast<std::size_t>(hz / binHz); }
    double hzAt(std::size_t bin) const { return static_cast<double>(bin) * binHz; }

    double powerBetween(double lowHz, double highHz) const {
        double sum = 0.0;
        for (std::size_t bin = binAt(lowHz); bin < std::min(binAt(highHz), power.size()); ++bin) {
            sum += power[bin];
        }
        return sum;
    }
    double centroidHz() const {
        double weighted = 0.0;
        for (std::size_t bin = 0; bin < power.size(); ++bin) {
            weighted += hzAt(bin) * power[bin];
        }
        return weighted / powerBetween(0.0, kRateHz / 2.0);
    }
    double strongestHz() const {
        return hzAt(static_cast<std::size_t>(
            std::distance(power.begin(), std::max_element(power.begin(), power.end()))));
    }
    // Geometric over arithmetic mean: 0 dB for a flat spectrum, less where lines stand out.
    double flatnessDb(double lowHz, double highHz) const {
        const auto bins = static_cast<double>(binAt(highHz) - binAt(lowHz));
        double logs = 0.0;
        for (std::size_t bin = binAt(lowHz); bin < binAt(highHz); ++bin) {
            logs += std::log10(power[bin]);
        }
        return 10.0 * (logs / bins - std::log10(powerBetween(lowHz, highHz) / bins));
    }
};

// Twice the time from -5 to -35 dB of the energy that is still to come.
inline double t60Ms(const Signal& signal) {
    std::vector<double> toCome(signal.size());
    double sum = 0.0;
    for (std::size_t frame = signal.size(); frame-- > 0;) {
        sum += static_cast<double>(signal[frame]) * static_cast<double>(signal[frame]);
        toCome[frame] = sum;
    }
    const auto fallenTo = [&](double levelDb) {
        const double energy = sum * std::pow(10.0, levelDb / 10.0);
        return std::lower_bound(toCome.begin(), toCome.end(), energy, std::greater<>());
    };
    return 2.0 * static_cast<double>(std::distance(fallenTo(-5.0), fallenTo(-35.0))) / kFramesPerMs;
}

// Mean pitch of what crosses zero between two times, heard through a mean of 1 ms.
inline double crossingHz(const Signal& signal, double fromMs, double toMs) {
    constexpr std::size_t kMeanFrames = 96;
    double mean = 0.0;
    double lastMean = 0.0;
    std::vector<double> crossingsMs;
    for (std::size_t frame = kMeanFrames; frame < signal.size(); ++frame) {
        lastMean = mean;
        mean +=
            static_cast<double>(signal[frame]) - static_cast<double>(signal[frame - kMeanFrames]);
        const double ms = static_cast<double>(frame) / kFramesPerMs;
        if (lastMean * mean < 0.0 && ms >= fromMs && ms < toMs) {
            crossingsMs.push_back(ms);
        }
    }
    if (crossingsMs.size() < 2) {
        return 0.0;
    }
    return 500.0 * static_cast<double>(crossingsMs.size() - 1) /
           (crossingsMs.back() - crossingsMs.front());
}

} // namespace recordings_test
