#include "iconfamily/vips/VipsModule.h"

namespace quilo {

extern "C" __attribute__((visibility("default"))) const ImageCodecs* quiloImageCodecs()
{
    static const ImageCodecs codecs{&vipsLoadPicture, &vipsDecodeEmbeddedImage, &vipsEncodePng};
    return &codecs;
}

} // namespace quilo
