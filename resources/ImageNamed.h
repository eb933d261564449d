#pragma once

#include <QIcon>
#include <QString>

namespace quilo {

// The application's image of that name (":/images/NAME"), every size it comes
// in: all pages of a multi-page file, and its "@2x" twin for dense screens.
// A name without an extension finds NAME.png or NAME.tiff. An unknown or
// unreadable image gives a null icon; an unreadable one is also logged, since
// it means the installation lacks an image format. Pixmaps: GUI thread only.
QIcon imageNamed(const QString& name);

} // namespace quilo
