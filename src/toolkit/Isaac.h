#pragma once

#include <QtGlobal>

#include <array>

/// The ISAAC generator of random numbers, for shuffling.
class Isaac
{
public:
    static constexpr int kWords = 256;
    using Words = std::array<quint32, kWords>;

    explicit Isaac(const Words &seed);
    /// Seeded from the system's simple generator, which is started with `seconds`.
    [[nodiscard]] static Isaac startedWith(quint32 seconds);

    /// The next number; the results of one round are used from the last to the first.
    [[nodiscard]] quint32 next();

private:
    void generate();

    Words m_memory{};
    Words m_results;
    quint32 m_accumulator = 0;
    quint32 m_last = 0;
    quint32 m_rounds = 0;
    int m_left = 0; ///< results not used yet
};
