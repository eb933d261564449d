#include "foundation/PropertyList.h"

#include <QDateTime>
#include <QFile>
#include <QVariantList>
#include <QVariantMap>
#include <QXmlStreamReader>

namespace quilo {
namespace {

class Reader {
public:
    Reader(const QByteArray& xml, const PropertyListLimits& limits)
        : xml_(xml)
        , limits_(limits)
    {
        // Entities declared in a DTD are never expanded: none is allowed at all.
        xml_.setEntityExpansionLimit(0);
    }

    std::optional<QVariant> document(QString& error)
    {
        std::optional<QVariant> root;
        if (nextElement() && xml_.name() == u"plist" && nextElement())
            root = value(1);
        if (root && (nextElement() || xml_.hasError()))
            fail("more than one value in the property list");
        if (!root || !error_.isEmpty() || xml_.hasError()) {
            error = !error_.isEmpty() ? error_ : xml_.hasError() ? xml_.errorString() : "no property list";
            return std::nullopt;
        }
        return root;
    }

private:
    // Moves to the next start element inside the current one; false at its end.
    bool nextElement()
    {
        while (!xml_.atEnd()) {
            switch (xml_.readNext()) {
            case QXmlStreamReader::StartElement:
                return true;
            case QXmlStreamReader::EndElement:
                return false;
            case QXmlStreamReader::DTD:
                if (!xml_.entityDeclarations().isEmpty())
                    fail("the document declares entities");
                break;
            case QXmlStreamReader::EntityReference:
                fail("the document refers to an entity");
                return false;
            case QXmlStreamReader::Characters:
                if (!xml_.isWhitespace())
                    fail("text where an element was expected");
                break;
            default:
                break;
            }
            if (!error_.isEmpty())
                return false;
        }
        return false;
    }

    std::optional<QVariant> value(int depth)
    {
        if (depth > limits_.maximumDepth) {
            fail("the property list nests too deeply");
            return std::nullopt;
        }
        const QString type = xml_.name().toString();
        if (type == "dict")
            return dictionary(depth);
        if (type == "array")
            return array(depth);
        if (type == "true" || type == "false") {
            if (nextElement() || !error_.isEmpty())
                return failed("true and false hold nothing");
            return QVariant(type == "true");
        }
        return scalar(type);
    }

    std::optional<QVariant> dictionary(int depth)
    {
        QVariantMap entries;
        while (nextElement()) {
            if (xml_.name() != u"key")
                return failed("a dictionary entry without its key");
            const QString key = text();
            if (!error_.isEmpty() || !nextElement())
                return failed("a dictionary key without its value");
            auto entry = value(depth + 1);
            if (!entry)
                return std::nullopt;
            entries.insert(key, *entry);
        }
        return error_.isEmpty() ? std::optional<QVariant>(entries) : std::nullopt;
    }

    std::optional<QVariant> array(int depth)
    {
        QVariantList items;
        while (nextElement()) {
            auto item = value(depth + 1);
            if (!item)
                return std::nullopt;
            items << *item;
        }
        return error_.isEmpty() ? std::optional<QVariant>(items) : std::nullopt;
    }

    std::optional<QVariant> scalar(const QString& type)
    {
        const QString content = text();
        if (!error_.isEmpty())
            return std::nullopt;
        bool ok = true;
        QVariant result;
        if (type == "string")
            result = content;
        else if (type == "integer")
            result = content.trimmed().toLongLong(&ok);
        else if (type == "real")
            result = content.trimmed().toDouble(&ok);
        else if (type == "date") {
            const QDateTime date = QDateTime::fromString(content.trimmed(), Qt::ISODate);
            ok = date.isValid();
            result = date.toUTC();
        } else if (type == "data") {
            const auto decoded = QByteArray::fromBase64Encoding(content.simplified().remove(' ').toLatin1(),
                                                                QByteArray::AbortOnBase64DecodingErrors);
            ok = bool(decoded);
            result = *decoded;
        } else
            return failed("an unknown element <" + type + ">");
        if (!ok)
            return failed("a malformed <" + type + ">");
        return result;
    }

    // The text of a leaf element, which must hold nothing else. Read token by
    // token: an entity the reader could not resolve is a token of its own,
    // which readElementText() would pass over in silence.
    QString text()
    {
        QString content;
        while (!xml_.atEnd()) {
            switch (xml_.readNext()) {
            case QXmlStreamReader::Characters:
                content += xml_.text();
                break;
            case QXmlStreamReader::EndElement:
                return content;
            case QXmlStreamReader::EntityReference:
                fail("the document refers to an entity");
                return {};
            case QXmlStreamReader::StartElement:
                fail("an element where text was expected");
                return {};
            default:
                break;
            }
        }
        fail(xml_.hasError() ? xml_.errorString() : "the document ends inside an element");
        return {};
    }

    void fail(const QString& why)
    {
        if (error_.isEmpty())
            error_ = why;
    }
    std::optional<QVariant> failed(const QString& why)
    {
        fail(why);
        return std::nullopt;
    }

    QXmlStreamReader xml_;
    PropertyListLimits limits_;
    QString error_;
};

} // namespace

std::optional<QVariant> propertyListFromXml(const QByteArray& xml, QString* error, const PropertyListLimits& limits)
{
    QString why;
    std::optional<QVariant> result;
    if (xml.size() > limits.maximumBytes)
        why = "the document is larger than " + QString::number(limits.maximumBytes) + " bytes";
    else
        result = Reader(xml, limits).document(why);
    if (error)
        *error = why;
    return result;
}

std::optional<QVariantMap> dictionaryWithContentsOfFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    const auto list = propertyListFromXml(file.readAll());
    if (!list || list->typeId() != QMetaType::QVariantMap)
        return std::nullopt;
    return list->toMap();
}

} // namespace quilo
