#include "Isaac.h"

#include <cstdlib>

namespace {

constexpr quint32 kGoldenRatio = 0x9e3779b9;
using Mixers = std::array<quint32, 8>;

void mix(Mixers &m)
{
    static constexpr std::array shifts = {11, -2, 8, -16, 10, -4, 8, -9}; // left above 0, right below
    for (size_t i = 0; i < m.size(); ++i) {
        const quint32 next = m.at((i + 1) % 8);
        const int shift = shifts.at(i);
        m.at(i) ^= shift > 0 ? next << shift : next >> -shift;
        m.at((i + 3) % 8) += m.at(i);
        m.at((i + 1) % 8) += m.at((i + 2) % 8);
    }
}

/// One pass over the memory: stirs `words` in, eight at a time.
void stir(Isaac::Words &memory, Mixers &mixers, const Isaac::Words &words)
{
    for (size_t i = 0; i < memory.size(); i += mixers.size()) {
        for (size_t j = 0; j < mixers.size(); ++j)
            mixers.at(j) += words.at(i + j);
        mix(mixers);
        for (size_t j = 0; j < mixers.size(); ++j)
            memory.at(i + j) = mixers.at(j);
    }
}

}

Isaac::Isaac(const Words &seed)
{
    Mixers mixers;
    mixers.fill(kGoldenRatio);
    for (int i = 0; i < 4; ++i)
        mix(mixers);
    stir(m_memory, mixers, seed);
    stir(m_memory, mixers, Words(m_memory)); // so that every word of the seed reaches all of the memory
    generate();
}

Isaac Isaac::startedWith(quint32 seconds)
{
    std::array<char, 128> state; // as large as the system's own
    random_data generator = {};
    initstate_r(seconds, state.data(), state.size(), &generator);
    const auto draw = [&](quint32 mask) {
        qint32 number = 0;
        random_r(&generator, &number);
        return static_cast<quint32>(number) & mask;
    };
    Words seed;
    for (quint32 &word : seed) {
        word = draw(0xffffff);
        word *= draw(0xf0fff);
    }
    return Isaac(seed);
}

void Isaac::generate()
{
    m_last += ++m_rounds;
    for (size_t i = 0; i < m_memory.size(); ++i) {
        static constexpr std::array shifts = {13, -6, 2, -16};
        const int shift = shifts.at(i % shifts.size());
        m_accumulator ^= shift > 0 ? m_accumulator << shift : m_accumulator >> -shift;
        m_accumulator += m_memory.at((i + kWords / 2) % kWords);
        const quint32 word = m_memory.at(i);
        m_memory.at(i) = m_memory.at((word >> 2) % kWords) + m_accumulator + m_last;
        m_last = m_memory.at((m_memory.at(i) >> 10) % kWords) + word;
        m_results.at(i) = m_last;
    }
    m_left = kWords;
}

quint32 Isaac::next()
{
    if (m_left == 0)
        generate();
    return m_results.at(static_cast<size_t>(--m_left));
}
