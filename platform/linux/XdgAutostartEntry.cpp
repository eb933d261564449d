#include "platform/linux/XdgAutostartEntry.h"

#include "platform/linux/DesktopEntryText.h"

#include <QStringList>

namespace quilo {
namespace {

const QString kPathKey = QStringLiteral("X-Quilo-Path");
const QString kHideKey = QStringLiteral("X-Quilo-Hide");
const QString kAliasDataKey = QStringLiteral("X-Quilo-AliasData");
const QString kExecKey = QStringLiteral("Exec");

// Takes the login item's own values out of the group into the item; the rest
// of the group stays.
void takeOwnKeys(DesktopKeyValues& group, AutostartEntry& entry)
{
    for (auto pair = group.begin(); pair != group.end();) {
        const auto& [key, value] = *pair;
        if (key == kPathKey)
            entry[AutostartKey::Path] = unescapedDesktopValue(value);
        else if (key == kHideKey)
            entry[AutostartKey::Hide] = value.trimmed() == QStringLiteral("true");
        else if (key == kAliasDataKey)
            entry[AutostartKey::AliasData] = QByteArray::fromBase64(value.trimmed().toLatin1());
        else {
            ++pair;
            continue;
        }
        pair = group.erase(pair);
    }
}

// What a desktop's startup settings write to switch an entry off, short of
// deleting it.
bool isSwitchedOff(const DesktopKeyValues& group)
{
    for (const auto& [key, value] : group) {
        if ((key == QStringLiteral("Hidden") && value.trimmed() == QStringLiteral("true"))
            || (key == QStringLiteral("X-GNOME-Autostart-enabled") && value.trimmed() == QStringLiteral("false")))
            return true;
    }
    return false;
}

QString execProgramOf(const DesktopKeyValues& group)
{
    for (const auto& [key, value] : group) {
        if (key == kExecKey)
            return execProgram(unescapedDesktopValue(value));
    }
    return {};
}

// The keys of an entry that starts `program`, as written in the file.
DesktopKeyValues startingKeys(const QString& program)
{
    return {
        {"Type", "Application"},
        {"Name", "Quilo"},
        {"Comment", "Puts thumbnails of pictures on them as their icons"},
        {kExecKey, escapedDesktopValue(quotedExecArgument(program))},
        {"Icon", "quilo"},
        {"Terminal", "false"},
    };
}

QVariantList listFromGroup(const DesktopKeyValues& group)
{
    QVariantList list;
    for (const auto& [key, value] : group)
        list.append(QStringList{key, value});
    return list;
}

DesktopKeyValues groupFromList(const QVariantList& list)
{
    DesktopKeyValues group;
    for (const QVariant& pair : list) {
        const QStringList keyAndValue = pair.toStringList();
        if (keyAndValue.size() == 2 && !keyAndValue[0].isEmpty())
            group.append({keyAndValue[0], keyAndValue[1]});
    }
    return group;
}

} // namespace

AutostartEntry autostartEntryFromDesktopFile(const QByteArray& fileText)
{
    DesktopKeyValues group = desktopEntryGroup(fileText);
    AutostartEntry entry;
    takeOwnKeys(group, entry);
    if (!entry.contains(AutostartKey::Path)) {
        const QString program = execProgramOf(group);
        if (!program.isEmpty())
            entry[AutostartKey::Path] = program;
    }
    if (isSwitchedOff(group))
        entry[AutostartKey::Disabled] = true;
    entry[AutostartKey::DesktopEntry] = listFromGroup(group);
    return entry;
}

bool isNewAutostartEntry(const AutostartEntry& entry)
{
    return groupFromList(entry.value(AutostartKey::DesktopEntry).toList()).isEmpty();
}

std::optional<QByteArray> desktopFileFromAutostartEntry(const AutostartEntry& entry, const QString& launchPath)
{
    const QString path = entry.value(AutostartKey::Path).toString();
    DesktopKeyValues group = groupFromList(entry.value(AutostartKey::DesktopEntry).toList());
    if (group.isEmpty() && path.isEmpty())
        return std::nullopt;
    if (group.isEmpty())
        group = startingKeys(launchPath.isEmpty() ? path : launchPath);
    if (entry.contains(AutostartKey::Path))
        group.append({kPathKey, escapedDesktopValue(path)});
    if (entry.contains(AutostartKey::Hide))
        group.append({kHideKey, entry.value(AutostartKey::Hide).toBool() ? "true" : "false"});
    if (entry.contains(AutostartKey::AliasData)) {
        const QByteArray aliasData = entry.value(AutostartKey::AliasData).toByteArray();
        group.append({kAliasDataKey, QString::fromLatin1(aliasData.toBase64())});
    }

    QString text = QStringLiteral("[Desktop Entry]\n");
    for (const auto& [key, value] : group)
        text += key + '=' + value + '\n';
    return text.toUtf8();
}

} // namespace quilo
