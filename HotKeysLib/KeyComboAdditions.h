#pragma once

#include "HotKeysLib/KeyCombo.h"

namespace quilo {

class UserDefaults;

// A combination kept in the user defaults as one archived value. Nothing in
// Quilo keeps its hot keys this way (they live in the "Hot Keys" record);
// the pair is here for whoever wants a single combination under a key.

// Archives the combination under the key; null removes the key.
void setKeyCombo(UserDefaults& defaults, const KeyCombo* keyCombo, const QString& forKey);
// The combination under the key; the cleared one when there is none or it
// cannot be read.
KeyCombo keyComboForKey(const UserDefaults& defaults, const QString& key);

} // namespace quilo
