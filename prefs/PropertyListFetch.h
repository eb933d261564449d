#pragma once

#include "foundation/PropertyList.h"

#include <QUrl>
#include <QVariant>

#include <chrono>
#include <optional>
#include <stop_token>

namespace quilo {

// An http or https address with a host: the only kind that the update check
// fetches or opens.
bool isWebAddress(const QUrl& url);

// Fetches a property list over http or https and parses it, blocking the
// calling thread until it is done: at most `timeout` in all. Redirects are
// followed to http and https addresses only; a body beyond the limits' size
// is cut off as soon as it shows. Nullopt, with the reason in `error`, for
// any failure: no connection, no answer in time, a status other than 2xx, a
// body too large, a document that is not a property list, a stop requested
// through `cancel` (which ends the fetch at once).
std::optional<QVariant> propertyListWithContentsOfURL(const QUrl& url, std::chrono::milliseconds timeout,
                                                      QString* error = nullptr,
                                                      const PropertyListLimits& limits = {},
                                                      std::stop_token cancel = {});

} // namespace quilo
