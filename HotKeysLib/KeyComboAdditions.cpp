#include "HotKeysLib/KeyComboAdditions.h"

#include "foundation/UserDefaults.h"

namespace quilo {

void setKeyCombo(UserDefaults& defaults, const KeyCombo* keyCombo, const QString& forKey)
{
    if (keyCombo)
        defaults.setObject(keyCombo->encodeWithCoder(), forKey);
    else
        defaults.removeObjectForKey(forKey);
}

KeyCombo keyComboForKey(const UserDefaults& defaults, const QString& key)
{
    const QVariant archive = defaults.objectForKey(key);
    if (!archive.isValid())
        return KeyCombo::clearKeyCombo();
    return KeyCombo::initWithCoder(archive.toByteArray());
}

} // namespace quilo
