// Thunar: custom actions, all in one file, uca.xml, that the user edits too.
// Ours are told apart by their unique-id and spliced in and out of the text,
// so the user's actions, comments and layout stay byte for byte. Thunar puts
// the selection in place of %F, each path quoted for the shell, and splits
// the command as the shell would.
#include "platform/linux/FileManagerActions.h"

#include <QString>
#include <QXmlStreamReader>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <optional>

namespace quilo::filemanager {
namespace {

namespace fs = std::filesystem;

using Range = std::pair<qsizetype, qsizetype>;

// Where the actions lie in the file's text.
struct ActionList {
    QString text;
    std::vector<Range> ours; // each action of ours, with its whole lines where it has them to itself
    qsizetype end = 0;       // where new actions go: before </actions>, on a line of their own if it has one
};

const QString kEmptyList = QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<actions>\n</actions>\n");

bool isBlank(QChar c) { return c == u' ' || c == u'\t'; }

Range wholeLines(const QString& text, Range range)
{
    auto [start, end] = range;
    while (start > 0 && isBlank(text[start - 1]))
        --start;
    while (end < text.size() && isBlank(text[end]))
        ++end;
    if ((start == 0 || text[start - 1] == u'\n') && (end == text.size() || text[end] == u'\n'))
        return {start, std::min(end + 1, text.size())};
    return range;
}

qsizetype lineStartBefore(const QString& text, qsizetype at)
{
    qsizetype start = at;
    while (start > 0 && isBlank(text[start - 1]))
        --start;
    return start == 0 || text[start - 1] == u'\n' ? start : at;
}

// The reader's offsets run one character into the next token, so a tag is
// found from its closing '>': no '<' can come between.
std::optional<ActionList> parse(const QString& text, std::string& error)
{
    ActionList list{text, {}, -1};
    QXmlStreamReader reader(text);
    int depth = 0;
    qsizetype actionStart = -1;
    bool actionIsOurs = false;
    while (!reader.atEnd()) {
        const QXmlStreamReader::TokenType token = reader.readNext();
        const qsizetype offset = reader.characterOffset();
        if (token == QXmlStreamReader::StartElement) {
            ++depth;
            if (depth == 1 && reader.name() != u"actions") {
                error = "its root element is not <actions>";
                return std::nullopt;
            }
            if (depth == 1 && text.mid(offset - 2, 2) == u"/>") // <actions/>: give it a closing tag to insert before
                return parse(text.left(offset - 2) + QStringLiteral(">\n</actions>") + text.mid(offset), error);
            if (depth == 2 && reader.name() == u"action") {
                actionStart = text.lastIndexOf(u'<', offset - 1);
                actionIsOurs = false;
            }
            if (depth == 3 && actionStart >= 0 && reader.name() == u"unique-id") {
                actionIsOurs = reader.readElementText().trimmed().startsWith(u"quilo-");
                --depth;
            }
        } else if (token == QXmlStreamReader::EndElement) {
            if (depth == 2 && actionStart >= 0 && actionIsOurs)
                list.ours.push_back(wholeLines(text, {actionStart, offset}));
            if (depth == 2)
                actionStart = -1;
            if (depth == 1)
                list.end = lineStartBefore(text, text.lastIndexOf(u'<', offset - 1));
            --depth;
        }
    }
    if (reader.hasError()) {
        QString why = reader.errorString();
        if (why.endsWith(u'.'))
            why.chop(1); // the sentence goes on
        error = "line " + std::to_string(reader.lineNumber()) + ": " + why.toStdString();
        return std::nullopt;
    }
    return list;
}

// The text with our actions taken out and `block` put where the first of
// them was, or at the end.
QString spliced(const ActionList& list, const QString& block)
{
    const QString& text = list.text;
    if (list.ours.empty())
        return text.left(list.end) + block + text.mid(list.end);
    QString result = text.left(list.ours.front().first) + block;
    for (std::size_t i = 0; i < list.ours.size(); ++i) {
        const qsizetype from = list.ours[i].second;
        const qsizetype to = i + 1 < list.ours.size() ? list.ours[i + 1].first : text.size();
        result += QStringView(text).mid(from, to - from);
    }
    return result;
}

std::string escaped(std::string_view text)
{
    std::string result;
    for (const char c : text) {
        if (c == '&')
            result += "&amp;";
        else if (c == '<')
            result += "&lt;";
        else if (c == '>')
            result += "&gt;";
        else if (c == '\r') // a parser would read a line feed
            result += "&#13;";
        else
            result += c;
    }
    return result;
}

// Laid out as Thunar writes its own.
std::string actionElement(const Setup& setup, const Action& action)
{
    const std::string command = percentsDoubled(shellQuoted(setup.quilo)) + " request " + action.word + " %F";
    std::string text = "<action>\n";
    text += "\t<icon>" + escaped(action.icon) + "</icon>\n";
    text += "\t<name>" + escaped(action.label) + "</name>\n";
    text += "\t<submenu>Quilo</submenu>\n";
    text += "\t<unique-id>quilo-" + escaped(action.word) + "</unique-id>\n";
    text += "\t<command>" + escaped(command) + "</command>\n";
    text += "\t<description>" + escaped(action.description) + "</description>\n";
    return text + "\t<patterns>*</patterns>\n\t<image-files/>\n</action>\n";
}

QString actionsBlock(const Setup& setup)
{
    std::string block;
    for (const Action& action : actions())
        block += actionElement(setup, action);
    return QString::fromStdString(block);
}

fs::path userFile(const Setup& setup) { return setup.configHome / "Thunar/uca.xml"; }

// Nullopt when there is no file; an error when it cannot be read or is not
// UTF-8, the only encoding Thunar reads.
std::optional<QString> readText(const fs::path& path, std::string& error)
{
    std::error_code missing;
    if (!fs::exists(path, missing))
        return std::nullopt;
    std::ifstream file(path, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file.good() && !file.eof())
        error = "cannot read " + path.string();
    const QString text = QString::fromUtf8(bytes);
    if (error.empty() && text.toUtf8().toStdString() != bytes)
        error = path.string() + " is not UTF-8 text, as Thunar reads it; it is left as it is";
    return text;
}

// Without a file of the user's, Thunar shows the first one it finds in the
// system's folders: the user's file starts as a copy, so nothing is lost.
QString startingText(const Setup& setup)
{
    for (const fs::path& folder : setup.configDirs) {
        std::string error;
        const auto text = readText(folder / "Thunar/uca.xml", error);
        if (text && error.empty() && parse(*text, error))
            return *text;
    }
    return kEmptyList;
}

std::optional<ActionList> userActions(const fs::path& path, const QString& text, Result& result)
{
    std::string error;
    auto list = parse(text, error);
    if (!list)
        result.error = path.string() + " is not a list of Thunar actions that Quilo can read (" + error
            + "); it is left as it is";
    return list;
}

// The file is UTF-8, and XML 1.0 cannot hold the other control characters,
// not even as references.
bool fitsInXml(const std::string& text)
{
    return QString::fromStdString(text).toStdString() == text
        && std::none_of(text.begin(), text.end(), [](char c) {
               return static_cast<unsigned char>(c) < 0x20 && c != '\t' && c != '\n' && c != '\r';
           });
}

Result install(const Setup& setup)
{
    Result result;
    const fs::path path = userFile(setup);
    if (!fitsInXml(setup.quilo)) {
        result.error = "the path of quilo has characters that " + path.string() + " cannot hold";
        return result;
    }
    const auto existing = readText(path, result.error);
    if (!result.error.empty())
        return result;
    const auto list = userActions(path, existing ? *existing : startingText(setup), result);
    if (list)
        writeFile(path, spliced(*list, actionsBlock(setup)).toUtf8().toStdString(), false, result);
    return result;
}

// A file that holds no more than what Thunar would show without it goes.
Result uninstall(const Setup& setup)
{
    Result result;
    const fs::path path = userFile(setup);
    const auto existing = readText(path, result.error);
    if (!existing || !result.error.empty())
        return result;
    const auto list = userActions(path, *existing, result);
    if (!list || list->ours.empty())
        return result;
    const QString rest = spliced(*list, {});
    if (rest == startingText(setup))
        removeFile(path, result);
    else
        writeFile(path, rest.toUtf8().toStdString(), false, result);
    return result;
}

} // namespace

FileManager thunar() { return {"thunar", "Thunar", &install, &uninstall}; }

} // namespace quilo::filemanager
