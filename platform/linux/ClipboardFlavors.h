#pragma once

#include "iconfamily/Scrap.h"

#include <QString>

// Which MIME type carries which flavour on the desktop's clipboard. The
// well-known flavours get the MIME types other programs use for the same
// data; any other flavour travels as "application/x-quilo-flavor-" and its
// code in eight hexadecimal digits, and any other MIME type reads as a code
// made from its name.
namespace quilo {

QString mimeTypeForFlavor(ScrapFlavorType flavorType);
ScrapFlavorType flavorForMimeType(const QString& mimeType);

} // namespace quilo
