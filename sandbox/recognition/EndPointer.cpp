#include "sandbox/recognition/EndPointer.h"

#include <algorithm>
#include <cmath>

namespace sandbox {
namespace {

// Decibels over the noise floor, of the square of 16-bit sample values.
constexpr double onDb = 9;
constexpr double offDb = 6;

// Frames of 10 ms.
constexpr std::int64_t startWindow = 12;
constexpr std::int64_t startLoud = 6;
constexpr std::int64_t lookBack = 50;
constexpr std::int64_t lookBackGap = 10;
constexpr std::int64_t pauseQuiet = 30;
constexpr std::int64_t endQuiet = 60;
constexpr std::int64_t longest = 1500;
constexpr std::int64_t margin = 8;
constexpr std::int64_t longestPause = 12;

constexpr std::size_t smoothing = 5;
constexpr std::size_t floorWindow = 200;

// The floor falls at once and rises slowly: a steady noise is learnt within a second, a sustained vowel is not.
constexpr double idleRiseDb = 0.2;
constexpr double speechRiseDb = 0.03;

// A stream may begin in the middle of a word. Until there has been a chance to see a pause, nothing louder than this
// counts as noise.
constexpr std::int64_t firstFrames = 50;
constexpr double firstFloorDb = 50;

// The minimum over a window lies below the mean of a steady noise.
constexpr double minimumBiasDb = 1;

// Digital silence is quieter than any room, and anything would stand out of it.
constexpr double lowestFloorDb = 12;

double decibels(double sumOfSquares)
{
    return 10 * std::log10(sumOfSquares / static_cast<double>(EndPointer::frameSamples) + 1);
}

} // namespace

std::optional<EndPointer::Event> EndPointer::push(std::span<const std::int16_t, frameSamples> samples)
{
    Frame frame{};
    std::copy(samples.begin(), samples.end(), frame.samples.begin());
    frame.db = measure(samples);
    trackFloor(frame.db);
    frame.loud = standsOut(frame.db, m_inSpeech ? offDb : onDb);
    m_frames.push_back(frame);
    ++m_count;

    if (!m_inSpeech) {
        const auto from = std::max(firstKept(), m_count - startWindow);
        std::int64_t loud = 0;
        for (auto i = from; i < m_count; ++i)
            loud += frameAt(i).loud ? 1 : 0;
        if (frame.loud && loud >= startLoud) {
            begin();
            return Event::Started;
        }
        forget();
        return std::nullopt;
    }

    // One loud frame alone is a click or a peak of the noise.
    const auto previousLoud =
        m_count >= 2 && (frameAt(m_count - 2).loud || (m_frames.size() > 2 && frameAt(m_count - 3).loud));
    if (frame.loud && previousLoud)
        m_lastLoud = m_count - 1;

    const auto quiet = m_count - 1 - m_lastLoud;
    if (quiet >= endQuiet || m_count - m_firstLoud >= longest)
        return finish();
    if (quiet == pauseQuiet)
        return Event::Paused;
    return std::nullopt;
}

std::optional<EndPointer::Event> EndPointer::finish()
{
    if (!m_inSpeech)
        return std::nullopt;
    m_inSpeech = false;
    return Event::Ended;
}

EndPointer::Clip EndPointer::clip() const
{
    const auto first = m_clipStart;
    const auto end = std::min(m_count, m_lastLoud + 1 + margin);
    Clip clip;
    clip.firstSample = first * static_cast<std::int64_t>(frameSamples);
    clip.endSample = end * static_cast<std::int64_t>(frameSamples);
    const auto append = [&](std::int64_t from, std::int64_t to) {
        for (auto i = from; i < to; ++i)
            clip.samples.insert(clip.samples.end(), frameAt(i).samples.begin(), frameAt(i).samples.end());
    };
    for (auto i = first; i < end;) {
        auto next = i;
        while (next < end && !frameAt(next).loud)
            ++next;
        if (next - i > longestPause) {
            append(i, i + longestPause / 2);
            append(next - longestPause / 2, next);
        } else {
            append(i, next);
        }
        i = next;
        while (i < end && frameAt(i).loud)
            ++i;
        append(next, i);
    }
    return clip;
}

EndPointer::Levels EndPointer::measure(std::span<const std::int16_t, frameSamples> frame)
{
    constexpr double dcPole = 0.97;  // high-pass at about 80 Hz
    constexpr double lowPole = 0.70; // low-pass at about 900 Hz
    constexpr double emphasis = 0.97;
    double low = 0;
    double high = 0;
    for (const double x : frame) {
        const double withoutDc = x - m_dcInput + dcPole * m_dcOutput;
        m_dcInput = x;
        m_dcOutput = withoutDc;
        m_lowpass = lowPole * m_lowpass + (1 - lowPole) * withoutDc;
        const double emphasised = x - emphasis * m_previousInput;
        m_previousInput = x;
        low += m_lowpass * m_lowpass;
        high += emphasised * emphasised;
    }
    return {decibels(low), decibels(high)};
}

void EndPointer::trackFloor(const Levels &db)
{
    m_recent.push_back(db);
    if (m_recent.size() > smoothing)
        m_recent.pop_front();
    Levels mean;
    for (const auto &levels : m_recent) {
        mean.low += levels.low / static_cast<double>(m_recent.size());
        mean.high += levels.high / static_cast<double>(m_recent.size());
    }
    m_smoothed.push_back(mean);
    if (m_smoothed.size() > floorWindow)
        m_smoothed.pop_front();

    const auto track = [&](double Levels::*band) {
        const auto least = std::min_element(m_smoothed.begin(), m_smoothed.end(),
                                            [band](const auto &a, const auto &b) { return a.*band < b.*band; });
        const double target = std::max((*least).*band + minimumBiasDb, lowestFloorDb);
        double &floor = m_floor.*band;
        if (m_count < firstFrames)
            floor = std::min(target, firstFloorDb);
        else
            floor = std::min(target, floor + (m_inSpeech ? speechRiseDb : idleRiseDb));
    };
    track(&Levels::low);
    track(&Levels::high);
}

bool EndPointer::standsOut(const Levels &db, double marginDb) const
{
    return db.low > m_floor.low + marginDb || db.high > m_floor.high + marginDb;
}

const EndPointer::Frame &EndPointer::frameAt(std::int64_t index) const
{
    return m_frames[static_cast<std::size_t>(index - firstKept())];
}

void EndPointer::begin()
{
    const auto earliest = std::max({firstKept(), m_lastLoud < 0 ? 0 : m_lastLoud + 1 + margin, m_count - lookBack});
    m_inSpeech = true;
    m_lastLoud = m_count - 1;
    // Speech fades in: the beginning is the first of the frames before that stand out a little.
    for (auto &frame : m_frames)
        frame.loud = standsOut(frame.db, offDb);
    m_firstLoud = m_count - 1;
    for (auto i = m_count - 1; i >= earliest && m_firstLoud - i <= lookBackGap; --i)
        if (frameAt(i).loud)
            m_firstLoud = i;
    m_clipStart = std::max(earliest, m_firstLoud - margin);
    while (firstKept() < m_clipStart)
        m_frames.pop_front();
}

void EndPointer::forget()
{
    while (static_cast<std::int64_t>(m_frames.size()) > lookBack + margin)
        m_frames.pop_front();
}

} // namespace sandbox
