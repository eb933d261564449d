#include "prefs/RTZLoginItemHelper.h"

#include "prefs/AutostartStore.h"
#include "prefs/RTZAliasDataHelper.h"

#include <QCoreApplication>

#include <algorithm>

namespace quilo {
namespace {

// As a path's last component is read on the Mac: trailing slashes are no
// component of their own.
QString lastPathComponent(QString path)
{
    while (path.size() > 1 && path.endsWith('/'))
        path.chop(1);
    return path == QStringLiteral("/") ? path : path.section('/', -1);
}

QString runningProgramPath() { return QCoreApplication::applicationFilePath(); }

// Without a program name (no application object) nothing is Quilo's: an item
// without a path must not count as ours and be removed.
bool isSelf(const AutostartEntry& entry, const QString& selfName)
{
    return !selfName.isEmpty() && lastPathComponent(entry.value(AutostartKey::Path).toString()) == selfName;
}

bool isDisabled(const AutostartEntry& entry) { return entry.value(AutostartKey::Disabled).toBool(); }

} // namespace

// An entry the session does not start puts nobody in the login items.
bool RTZLoginItemHelper::isSelfInLoginItems()
{
    const QString selfName = lastPathComponent(runningProgramPath());
    const QList<AutostartEntry> entries = makeAutostartStore()->readEntries();
    return std::any_of(entries.begin(), entries.end(), [&](const AutostartEntry& entry) {
        return isSelf(entry, selfName) && !isDisabled(entry);
    });
}

void RTZLoginItemHelper::addSelfToLoginItems(bool hide)
{
    const auto store = makeAutostartStore();
    QList<AutostartEntry> entries = store->readEntries();
    // A switched-off entry of Quilo's gives way to the new one, which the
    // store writes in its place: a desktop's startup settings then show the
    // one Quilo, switched on.
    entries.removeIf([selfName = lastPathComponent(runningProgramPath())](const AutostartEntry& entry) {
        return isSelf(entry, selfName) && isDisabled(entry);
    });
    const QString path = runningProgramPath();
    entries.append({
        {AutostartKey::AliasData, RTZAliasDataHelper::aliasDataFromFilePath(path)},
        {AutostartKey::Hide, hide},
        {AutostartKey::Path, path},
    });
    store->writeEntries(entries);
}

void RTZLoginItemHelper::removeSelfFromLoginItems()
{
    const QString selfName = lastPathComponent(runningProgramPath());
    const auto store = makeAutostartStore();
    QList<AutostartEntry> entries = store->readEntries();
    entries.removeIf([&](const AutostartEntry& entry) { return isSelf(entry, selfName); });
    // Written back even when nothing matched; the store leaves unchanged
    // items untouched.
    store->writeEntries(entries);
}

} // namespace quilo
