// Reads the input as an XML property list (an update document from the
// network), within the reader's limits and within tighter ones.
#include "tests/fuzz/FuzzTarget.h"

#include "foundation/PropertyList.h"
#include "tests/fuzz/FuzzCheck.h"

#include <QVariantList>
#include <QVariantMap>

namespace quilo::fuzz {
namespace {

void expect(bool holds, const char* promise)
{
    fuzz::expect(holds, "property list reader", promise);
}

int depthOf(const QVariant& value)
{
    int deepest = 0;
    if (value.typeId() == QMetaType::QVariantMap)
        for (const QVariant& item : value.toMap())
            deepest = std::max(deepest, depthOf(item));
    else if (value.typeId() == QMetaType::QVariantList)
        for (const QVariant& item : value.toList())
            deepest = std::max(deepest, depthOf(item));
    else
        return 0;
    return deepest + 1;
}

} // namespace

void fuzzInput(std::span<const std::uint8_t> bytes)
{
    const QByteArray xml(reinterpret_cast<const char*>(bytes.data()), qsizetype(bytes.size()));
    QString error;
    const auto value = propertyListFromXml(xml, &error);
    expect(value.has_value() == error.isEmpty(), "a refusal, and only a refusal, says why");
    if (value)
        expect(depthOf(*value) <= PropertyListLimits{}.maximumDepth, "containers nest within the limit");

    const auto shallow = propertyListFromXml(xml, nullptr, PropertyListLimits{xml.size(), 2});
    expect(!shallow || depthOf(*shallow) <= 2, "a list nesting deeper than asked is refused");
    expect(!shallow || (value && *shallow == *value), "tighter limits accept less, and read it the same");
    if (!xml.isEmpty())
        expect(!propertyListFromXml(xml, nullptr, PropertyListLimits{xml.size() - 1, 32}),
               "a list longer than asked is refused");
}

} // namespace quilo::fuzz
