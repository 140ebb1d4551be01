// Device-independent bitmaps: making, painting, capturing, reading and writing them. This layer knows nothing of frames
// or cameras. Rectangles are the platform's: right and bottom are exclusive.
//
// Every screen here shows true colour: a palette given to an operation is accepted and changes nothing, because a
// bitmap's own table names its colours exactly.
#pragma once

#include "dibapi32/dibutil.h"
#include "platform/files.h"
#include "platform/paint.h"
#include "platform/types.h"

#include <optional>
#include <string_view>

namespace kelvo {

// A cleared bitmap of width x height; null where memory is refused or a side is negative. bits below 2 give 1, below 5
// give 4, below 9 give 8, below 25 give 24, any other value 4. The header takes that depth, while the rows are as long
// as the bits asked for need.
Dib CreateDIB(int width, int height, int bits);

// The same for a picture that is drawn again and again: dib is such a bitmap then, with any pixels. The block that
// stands is taken where it has that form already and nobody else holds it. False where CreateDIB gives null; dib stays.
bool ReadyDIB(Dib& dib, int width, int height, int bits);

// Frees the block; dib is null afterwards. Always 0.
int FreeDib(Dib& dib);

// Between bitmap and device picture. Null or nullopt for no bitmap, an empty one, refused memory, or a layout that
// isn't plain rows of 1, 4, 8, 24 or 32 bits. A picture becomes rows of 24 bits.
std::optional<DeviceBitmap> BitmapFromDib(const Dib& dib, const Palette* palette = nullptr);
Dib DibFromBitmap(const DeviceBitmap& bitmap, const Palette* palette = nullptr);

// Paints the part source of a bitmap into destination, both counted from the top; pixels are repeated or left out,
// never mixed. Returns the number of bitmap rows used; 0 where nothing was painted: no bitmap, no surface, a layout
// that BitmapFromDib refuses, a source that is empty or reaches outside the bitmap. PaintDeviceBitmap is the same for a
// device picture.
int PaintDib(HWND window, const Rect& destination, const Dib& dib, const Rect& source,
             const Palette* palette = nullptr);
int PaintDeviceBitmap(HWND window, const Rect& destination, const DeviceBitmap& bitmap, const Rect& source,
                      const Palette* palette = nullptr);

constexpr int kCaptureWindow = 1;
constexpr int kCaptureClient = 2;

// What shows of a window (area: kCaptureWindow or kCaptureClient) or of the screen, cut off at the screen's edges, in
// device pixels. Null or nullopt for a null window, another area, an empty rectangle, or a system that doesn't let it
// be seen.
std::optional<DeviceBitmap> CaptureWindowBitmap(HWND window, int area);
std::optional<DeviceBitmap> CaptureRectBitmap(const Rect& rectangle);
Dib CaptureWindowDib(HWND window, int area);
Dib CaptureRectDib(const Rect& rectangle);

// Reads a bitmap file under the hourglass. Null on failure: a file that can't be opened is told by DibError(19), all
// other failures are silent.
Dib LoadDib(std::string_view path);

// Reads a bitmap file from its start. Headers above 40 bytes are taken by their first 40, with the table behind the
// whole header, and the block's header says 40; below 40 is refused. The block's header has biClrUsed set to the
// table's colours; where the rows begin within the table, the colours that it lacks are black (a table of more than 256
// colours must be whole). Sizes are held against the file's length before memory is taken. Null on any failure, no
// message.
Dib ReadDibFile(File& file);

// Errors by number, as DibError tells them.
constexpr int kDibErrorLock = 3;
constexpr int kDibErrorOpen = 4;
constexpr int kDibErrorDevice = 6;
constexpr int kDibErrorStretch = 9;
constexpr int kDibErrorStartDoc = 11;
constexpr int kDibErrorAbortProc = 13;
constexpr int kDibErrorNewFrame = 15;
constexpr int kDibErrorEndDoc = 17;
constexpr int kDibErrorNotFound = 19;
constexpr int kDibErrorHandle = 20;
constexpr int kDibErrorGeneral = 21;

// Writes a bitmap file; 0 for success, else an error number and the file stays as it was: 20 for a null bitmap, 3 where
// memory is refused, 4 where the file can't be made or the disk is full, 21 where the block holds fewer rows than its
// header says. A bitmap without the 40-byte header leaves an empty file and gives 0. The header's biSizeImage is set.
int SaveDib(const Dib& dib, std::string_view path);

// The same as a PNG file, of 8 bits with the bitmap's colour table or of 24; 20, 3, 4 as above, 21 for a bitmap that
// isn't of plain rows of 8 or 24 bits, or whose block holds fewer rows than its header says.
int SavePng(const Dib& dib, std::string_view path);

// The text of an error number; "Undefined Error!" for one that has none. DibError shows it under the caption "Error".
std::string_view DibErrorText(int number);
void DibError(int number);

}  // namespace kelvo
