#pragma once

/// Loops over floats, compiled again for processors that compute more of them at once.
namespace Wide {

/// Four, eight and sixteen numbers that are computed together.
struct Four
{
    using Floats = float __attribute__((vector_size(16), aligned(4), may_alias));
    using Ints = int __attribute__((vector_size(16), aligned(4), may_alias));
};
struct Eight
{
    using Floats = float __attribute__((vector_size(32), aligned(4), may_alias));
    using Ints = int __attribute__((vector_size(32), aligned(4), may_alias));
};
struct Sixteen
{
    using Floats = float __attribute__((vector_size(64), aligned(4), may_alias));
    using Ints = int __attribute__((vector_size(64), aligned(4), may_alias));
};

#if defined(__x86_64__)
enum class Width { Narrow, Eight, Sixteen };

[[nodiscard]] inline Width widthOfProcessor()
{
    const bool hasEight =
        __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") && __builtin_cpu_supports("f16c");
    const bool hasSixteen = __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512vl") &&
                            __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512dq");
    return !hasEight ? Width::Narrow : hasSixteen ? Width::Sixteen : Width::Eight;
}

template<typename Body>
__attribute__((target("avx2,fma,f16c"))) void runEight(Body body)
{
    body(Eight());
}

template<typename Body>
__attribute__((target("avx512f,avx512vl,avx512bw,avx512dq,avx2,fma,f16c,prefer-vector-width=512"))) void runSixteen(
    Body body)
{
    body(Sixteen());
}
#endif

/// Calls `body(how many)`, a lambda marked TAMSEL_WIDE, with the type of as many numbers as the processor computes
/// together, eight at least. What it captures by value is read once, not again in every turn of a loop.
template<typename Body>
void runMany(Body body)
{
#if defined(__x86_64__)
    static const Width width = widthOfProcessor();
    if (width == Width::Sixteen)
        return runSixteen(body);
    if (width == Width::Eight)
        return runEight(body);
#endif
    body(Eight());
}

/// The same for loops that do not name such types.
template<typename Body>
void run(Body body)
{
    runMany([body](auto) __attribute__((always_inline)) { body(); });
}

/// Calls `body(index, how many)` for all of `count` floats, a multiple of four: several at a time, as the type of the
/// second argument tells.
template<typename Body>
void runFloats(int count, Body body)
{
    runMany([ count, body ](auto many) __attribute__((always_inline)) {
        constexpr int step = sizeof(typename decltype(many)::Floats) / sizeof(float);
        int i = 0;
        for (; i + step <= count; i += step)
            body(i, many);
        for (; i < count; i += 4)
            body(i, Four());
    });
}

}

/// Behind the parameters of a lambda for Wide::run.
#define TAMSEL_WIDE __attribute__((always_inline))
