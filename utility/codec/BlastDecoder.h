#pragma once

// Expands what PKWARE's Data Compression Library has imploded. From C as well:
//
//     BlastState* state = NULL;
//     int code = blastInit(GiveBlock, &compressed, &state);
//     while (code == 0)
//     {
//         unsigned char part[1000];
//         uint64_t size = 0;
//         code = blastMore(state, part, sizeof part, &size);
//         Take(part, size);
//     }
//     blastTerm(state);
//
// The input is asked for a block when a bit of it is needed, and not before. What is imploded has no checksum: of a
// stream that was damaged anything may come, but nothing outside is read or written, whatever the input says.
//
// A stream whose expanded length is a multiple of 4096, 0 among them, deliberately ends in code 2, behind all of its
// bytes: blastEndMarkRead tells it from one that was cut.
//
// Nothing is thrown, and an input may throw nothing. A state belongs to one thread at a time. It is the only memory
// that is taken.

#include "utility/platform/Export.h"

#include <stdint.h> // NOLINT(modernize-deprecated-headers): C has no other

#ifdef __cplusplus
extern "C"
{
#endif

    /// A stream that is being expanded.
    struct BlastState;
    typedef struct BlastState BlastState;

    /// Gives the next block of a stream: stores where it starts, and gives how many bytes it has. It has to stay until
    /// the next one is asked for. With 0 there are no more.
    typedef uint32_t (*BlastInput)(void* context, const unsigned char** block);

    /// Reads the two bytes ahead of a stream. Each block comes from `input`, which gets `context`. The codes:
    ///   0   `state` is where the new state is.
    ///   1   There is no memory; `state` is null.
    ///   2   There is less than the two bytes; `state` is null.
    ///  -1   The first byte is neither 0 nor 1.
    ///  -2   The second byte is not 4, 5 or 6.
    /// With -1 and -2 there is a state as well, deliberately: it is to be ended like any other, and not expanded.
    UTILITY_API int blastInit(BlastInput input, void* context, BlastState** state);

    /// Expands up to `size` bytes to `buffer`, and stores how many they are in `stored`, whatever the code:
    ///   0   They are as many as were asked for, or the last ones.
    ///   1   The stream is at its end, and there were none left.
    ///   2   The input has ended, but not the stream. What was expanded last comes with the next call. Where the
    ///       input goes on after all, what follows is damaged.
    ///  -3   Bytes were to be repeated from ahead of the first one.
    /// With a `size` of 0 nothing is expanded, and the code is 0 or 1.
    UTILITY_API int blastMore(BlastState* state, void* buffer, uint64_t size, uint64_t* stored);

    /// Whether the mark at the end of the stream was read, 0 or 1. With 1 the stream is whole, and `size` is how many
    /// bytes it has expanded to; what blastMore gave behind that many belongs to no stream. With 0 `size` stays.
    UTILITY_API int blastEndMarkRead(const BlastState* state, uint64_t* size);

    /// Gives back the memory. Null is ignored.
    UTILITY_API void blastTerm(BlastState* state);

#ifdef __cplusplus
}
#endif
