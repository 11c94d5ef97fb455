/* Expands a stream that comes in two blocks. */
#include <utility/codec/BlastDecoder.h>

#include <stddef.h>
#include <string.h>

static const unsigned char imploded[] = {0x00, 0x05, 0x90, 0x94, 0x61, 0xC3, 0xE6, 0x0D, 0x88,
                                         0x2B, 0x6F, 0xE4, 0xB0, 0x21, 0x13, 0x12, 0xF0, 0x0F};

static uint32_t GiveBlock(void* context, const unsigned char** block)
{
    size_t* given = context;
    const uint32_t size = *given < sizeof imploded ? (uint32_t)sizeof imploded / 2 : 0;
    *block = imploded + *given;
    *given += size;
    return size;
}

int main(void)
{
    size_t given = 0;
    BlastState* state = NULL;
    unsigned char expanded[100];
    uint64_t size = 0;
    uint64_t whole = 0;
    int isGood = blastInit(GiveBlock, &given, &state) == 0;
    isGood = isGood && blastEndMarkRead(state, &whole) == 0;
    isGood = isGood && blastMore(state, expanded, sizeof expanded, &size) == 0;
    isGood = isGood && size == 12 && memcmp(expanded, "Hello World!", 12) == 0;
    isGood = isGood && blastMore(state, expanded, sizeof expanded, &size) == 1 && size == 0;
    isGood = isGood && blastEndMarkRead(state, &whole) == 1 && whole == 12;
    blastTerm(state);
    return isGood ? 0 : 1;
}
