#pragma once

/// Loops over floats, compiled a second time for processors that compute more of them at once.
namespace Wide {

/// Four and eight numbers that are computed together.
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

#if defined(__x86_64__)
template<typename Body>
__attribute__((target("avx2,fma,f16c"))) void runWide(Body body)
{
    body();
}
#endif

/// Calls `body`, a lambda marked TAMSEL_WIDE. What it captures by value is read once, not again in every turn of a
/// loop.
template<typename Body>
void run(Body body)
{
#if defined(__x86_64__)
    static const bool isWide =
        __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma") && __builtin_cpu_supports("f16c");
    if (isWide) {
        runWide(body);
        return;
    }
#endif
    body();
}

/// Calls `body(index, how many)` for all of `count` floats, a multiple of four: eight or four at a time, as the type
/// of the second argument tells.
template<typename Body>
void runFloats(int count, Body body)
{
    run([ count, body ]() __attribute__((always_inline)) {
        int i = 0;
        for (; i + 8 <= count; i += 8)
            body(i, Eight{});
        if (i < count)
            body(i, Four{});
    });
}

}

/// Behind the parameters of a lambda for Wide::run.
#define TAMSEL_WIDE __attribute__((always_inline))
