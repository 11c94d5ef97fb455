#pragma once

// One stream of zlib, to compress or to expand. The object is zlib's record z_stream and nothing else:
//
//     CZEngine engine;
//     auto& stream = reinterpret_cast<z_stream&>(engine); // <zlib.h>
//     engine.DeflateInit(6);
//     stream.next_in = text;
//     stream.avail_in = textSize;
//     stream.next_out = compressed;
//     stream.avail_out = roomForCompressed;
//     const bool isDone = engine.Deflate(Z_FINISH) == Z_STREAM_END;
//     engine.DeflateEnd();
//
// Each operation is the function of zlib with its name, and gives its result: a negative one is a failure. The first
// operation of a process loads zlib. Where it cannot be had, each raises the structured exception 0xC06D007E on
// Windows, as a delayed import does; on Linux each gives Z_VERSION_ERROR (-6) and changes nothing. Nothing is thrown.
// An object belongs to one thread at a time. Whoever begins a stream ends it: the object does not.

#include "utility/platform/Export.h"

struct z_stream_s;

class UTILITY_API CZEngine
{
public:
    /// All zeros, as zlib wants the record of a stream that is to begin.
    CZEngine();
    /// A copy deliberately shares zlib's state. Only one of the two may use and end the stream: the original, as zlib
    /// refuses the other.
    CZEngine(const CZEngine&) = default;
    CZEngine& operator=(const CZEngine&) = default;

    /// Begins to compress, as zlib has it: levels from 0, which stores, to 9, and -1 for zlib's choice.
    int DeflateInit(int level);
    /// The same with zlib's further choices; `windowBits` above 15 makes a gzip file, a negative one a bare stream.
    int DeflateInit2(int level, int method, int windowBits, int memoryLevel, int strategy);
    /// Compresses as much as there is input, and room for. `flush` is zlib's: Z_FINISH (4) until Z_STREAM_END (1).
    int Deflate(int flush);
    /// Gives back what the compression holds; Z_DATA_ERROR (-3) where it was not at its end.
    int DeflateEnd();

    /// Begins to expand a stream with zlib's own header.
    int InflateInit();
    /// Expands as much as there is input, and room for. Z_STREAM_END (1) once the stream is whole.
    int Inflate(int flush);
    /// Gives back what the expansion holds.
    int InflateEnd();

private:
    friend class CVRMLFile;

    UTILITY_LOCAL z_stream_s* GetZStream();

    // As long as the record, which holds numbers of the system's type long.
    alignas(void*) unsigned char m_record[sizeof(long) == 8 ? 112 : 88];
};
