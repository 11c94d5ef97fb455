#pragma once

// The images of a toolbar: a list that is filled from one strip, for the normal, the hot or the disabled state.
//
//     CZeloImageList images;
//     if (images.AddBitmap(101, 24, 0xC0C0C0, TB_SETDISABLEDIMAGELIST) == 0)
//         return false;
//     toolbar.SetImages(TB_SETDISABLEDIMAGELIST, images.GetSafeHandle());
//
// A strip is a bitmap of 32 bits among the resources of a module, with images side by side. It is looked for in the
// chain of resource modules (startup/LibraryFrame.h), and then in the program. The hot state darkens its colours by a
// gamma curve. The disabled state takes a tint instead, as bright as the pixel was. Alpha stays what it is, and nothing
// is multiplied by it.
//
// For the thread of the toolbar. What fails is told by what is returned; no message is shown, and the list can still be
// used.
//
// A strip is read as if it were of 32 bits, however deep it is. Of another depth the pixels are wrong, and black where
// its bytes end. Rows are copied in the order of memory: on Linux one that is stored from its uppermost row comes out
// upside down, and a bitmap that is compressed, or has a header of 12 bytes, is not found.

#include "utility/framework/ImageList.h"

class UTILITY_API CZeloImageList : public CImageList
{
public:
    /// There is no list yet.
    CZeloImageList();
    ~CZeloImageList() override;

    // Of a resource's number only the lower 16 bits count; a name may also be a number behind a #. An image has
    // `imageSize` pixels in each direction, at least one. The tint matters for the disabled state alone; its lowest
    // byte is red. `kind` is the message that the list is for: TB_SETHOTIMAGELIST, TB_SETDISABLEDIMAGELIST, or another
    // one for pixels as they are.

    /// A new list of the images of a strip: 1, or 0 on failure, which leaves an empty list, or, where none could be
    /// made, the earlier one. A bitmap that cannot be added is deliberately not deleted.
    int AddBitmap(unsigned int resourceId, int imageSize, const DWORD& tint, unsigned int kind);
    int AddBitmap(const wchar_t* resourceName, int imageSize, const DWORD& tint, unsigned int kind);

    /// Adds the images of a strip to the list: the index of the first, or -1 on failure.
    int AppendBitmap(unsigned int resourceId, int imageSize, const DWORD& tint, unsigned int kind);
    int AppendBitmap(const wchar_t* resourceName, int imageSize, const DWORD& tint, unsigned int kind);

private:
    UTILITY_LOCAL bool Create32BitImageList(const wchar_t* resourceName, int imageSize, const DWORD& tint,
                                            unsigned int kind);
    UTILITY_LOCAL HBITMAP Create32BitImage(const wchar_t* resourceName, int imageSize, int& imageCount,
                                           const DWORD& tint, unsigned int kind);
    UTILITY_LOCAL HBITMAP Create32BitImage(unsigned int resourceId, int imageSize, int& imageCount, const DWORD& tint,
                                           unsigned int kind);
    UTILITY_LOCAL unsigned char ApplyGamma(unsigned char channel, double gamma) const;
    UTILITY_LOCAL tagRGBQUAD ApplyDisable(unsigned char first, unsigned char second, unsigned char third,
                                          unsigned char tintRed, unsigned char tintGreen, unsigned char tintBlue) const;

    static const double m_dDisabledGamma;
    static const double m_dHotGamma;
    // Magenta, for nobody.
    static const unsigned char m_clrBackgroundRed;
    static const unsigned char m_clrBackgroundGreen;
    static const unsigned char m_clrBackgroundBlue;
};

// A colour with an alpha value is 0xAABBGGRR: a colour of Windows, and the alpha above it.

/// Whatever stands above the colour already is deliberately not cleared.
UTILITY_API DWORD MakeRGBA(DWORD rgb, unsigned char alpha);
/// The colour without its alpha.
UTILITY_API DWORD GetRGB(DWORD rgba);
/// The alpha: 0 is nothing, 255 is all of the colour.
UTILITY_API unsigned char GetAValue(DWORD rgba);
