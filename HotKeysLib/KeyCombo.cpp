#include "HotKeysLib/KeyCombo.h"

#include "foundation/LocalizedStrings.h"
#include "foundation/PropertyList.h"

#include <QDataStream>
#include <QIODevice>

#include <array>
#include <memory>

namespace quilo {
namespace {

struct ModifierGlyph {
    std::int32_t mask;
    char16_t glyph;
};

// Command, option, control, shift: the order the glyphs are shown in.
constexpr std::array<ModifierGlyph, 4> modToChar{{
    {cmdKey, u'\u2318'},
    {optionKey, u'\u2325'},
    {controlKey, u'\u005E'},
    {shiftKey, u'\u21E7'},
}};

constexpr char kArchiveClass[] = "KeyCombo";

QString& keyCodesResource()
{
    static QString path = ":/KeyCodes.plist";
    return path;
}

std::unique_ptr<QVariantMap>& keyCodes()
{
    static std::unique_ptr<QVariantMap> dictionary;
    return dictionary;
}

} // namespace

QString KeyCombo::stringForModifiers(std::int32_t modifiers)
{
    QString glyphs;
    for (const ModifierGlyph& row : modToChar)
        if (row.mask & modifiers)
            glyphs += QChar(row.glyph);
    if (!glyphs.isEmpty())
        glyphs += ' ';
    return glyphs;
}

QString KeyCombo::stringForKeyCode(std::int16_t keyCode)
{
    if (const QVariantMap* names = keyCodesDictionary()) {
        const QVariant name = names->value(QString::asprintf("%d", keyCode));
        if (name.isValid())
            return name.toString();
    }
    return QString::asprintf("%X", unsigned(int(keyCode))); // as C promotes a short
}

// A missing list is not kept, so the next call looks again.
const QVariantMap* KeyCombo::keyCodesDictionary()
{
    std::unique_ptr<QVariantMap>& dictionary = keyCodes();
    if (!dictionary) {
        auto names = dictionaryWithContentsOfFile(keyCodesResource());
        if (!names)
            return nullptr;
        dictionary = std::make_unique<QVariantMap>(std::move(*names));
    }
    return dictionary.get();
}

void KeyCombo::setKeyCodesResource(const QString& path)
{
    keyCodesResource() = path;
    keyCodes().reset();
}

QString KeyCombo::userDisplayRep() const
{
    if (!isValid())
        return localizedString("(None)");
    return stringForModifiers(mModifiers) + stringForKeyCode(mKeyCode);
}

QByteArray KeyCombo::encodeWithCoder() const
{
    QByteArray archive;
    QDataStream out(&archive, QIODevice::WriteOnly);
    out.writeRawData(kArchiveClass, sizeof kArchiveClass);
    out << qint16(mKeyCode) << qint32(mModifiers);
    return archive;
}

KeyCombo KeyCombo::initWithCoder(const QByteArray& archive)
{
    KeyCombo combo;
    if (archive.size() != qsizetype(sizeof kArchiveClass) + 6 || !archive.startsWith(kArchiveClass))
        return combo;
    QDataStream in(archive);
    in.skipRawData(sizeof kArchiveClass);
    qint16 keyCode = 0;
    qint32 modifiers = 0;
    in >> keyCode >> modifiers;
    if (in.status() == QDataStream::Ok)
        combo = KeyCombo(keyCode, modifiers);
    return combo;
}

} // namespace quilo
