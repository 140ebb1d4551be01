#include "video/held_picture.h"

namespace kelvo {

namespace {

int holders = 0;

}  // namespace

HeldPicture::HeldPicture()
{
    ++holders;
}

HeldPicture::~HeldPicture()
{
    --holders;
}

bool PictureIsHeld()
{
    return holders > 0;
}

}  // namespace kelvo
