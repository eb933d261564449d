#pragma once

#include "iconfamily/Scrap.h"

#include <QByteArray>

#include <map>

class QClipboard;

// The desktop's clipboard (Qt's) as the engine's scrap. Needs a
// QGuiApplication in the process and is used on its thread; without one
// every call answers noScrapErr or an empty list. On X11 what is put stays
// on the clipboard only while this process runs and owns it.
namespace quilo {

constexpr OSErr noScrapErr = -100;

class ClipboardScrap final : public Scrap {
public:
    OSErr clear() override;
    std::vector<ScrapFlavorInfo> flavorInfoList() override;
    OSErr flavorData(ScrapFlavorType flavorType, std::vector<std::uint8_t>& data) override;
    OSErr putFlavor(ScrapFlavorType flavorType, ScrapFlavorFlags flavorFlags,
                    std::span<const std::uint8_t> data) override;

private:
    static QClipboard* clipboard();
    static OSErr readFlavor(ScrapFlavorType flavorType, QByteArray& bytes);

    // What this process put since the last clear: each put offers all of it
    // again, as one fresh set of formats.
    std::map<ScrapFlavorType, QByteArray> put_;
};

} // namespace quilo
