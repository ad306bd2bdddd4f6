// SPDX-License-Identifier: MIT
#include "CsvReader.h"

#include <array>

namespace xv::data {

namespace {

constexpr char16_t kReplacement = 0xFFFD;

// The text of the file and where in it stand the characters its bytes did not give.
struct Decoded
{
    QString text;
    TextEncoding encoding = TextEncoding::Utf8;
    QVector<qsizetype> bad; // positions in text, in order
    QString badWhy;
};

// The length of the UTF-8 sequence at i and its code point; 0 when the bytes there are no valid sequence
// (a stray continuation byte, a sequence cut short, an overlong form, a surrogate, beyond U+10FFFF).
int utf8Sequence(const QByteArray& bytes, qsizetype i, char32_t& codePoint)
{
    const auto byte = [&](qsizetype at) { return static_cast<unsigned char>(bytes[at]); };
    const unsigned char lead = byte(i);
    int length = 0;
    char32_t minimum = 0;
    if (lead < 0x80) {
        codePoint = lead;
        return 1;
    }
    if ((lead & 0xE0) == 0xC0) {
        length = 2;
        codePoint = lead & 0x1F;
        minimum = 0x80;
    } else if ((lead & 0xF0) == 0xE0) {
        length = 3;
        codePoint = lead & 0x0F;
        minimum = 0x800;
    } else if ((lead & 0xF8) == 0xF0) {
        length = 4;
        codePoint = lead & 0x07;
        minimum = 0x10000;
    } else {
        return 0;
    }
    if (i + length > bytes.size())
        return 0;
    for (int k = 1; k < length; ++k) {
        const unsigned char next = byte(i + k);
        if ((next & 0xC0) != 0x80)
            return 0;
        codePoint = (codePoint << 6) | (next & 0x3F);
    }
    if (codePoint < minimum || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
        return 0;
    return length;
}

void appendCodePoint(QString& text, char32_t codePoint)
{
    if (codePoint < 0x10000) {
        text.append(QChar(static_cast<char16_t>(codePoint)));
    } else {
        const char32_t v = codePoint - 0x10000;
        text.append(QChar(static_cast<char16_t>(0xD800 + (v >> 10))));
        text.append(QChar(static_cast<char16_t>(0xDC00 + (v & 0x3FF))));
    }
}

// Reads the bytes as UTF-8 from start; answers whether any multi-byte sequence was valid.
bool decodeUtf8(const QByteArray& bytes, qsizetype start, Decoded& out)
{
    bool multiByte = false;
    out.text.reserve(bytes.size() - start);
    for (qsizetype i = start; i < bytes.size();) {
        char32_t codePoint = 0;
        const int length = utf8Sequence(bytes, i, codePoint);
        if (length == 0) {
            out.bad.push_back(out.text.size());
            out.text.append(QChar(kReplacement));
            ++i;
            continue;
        }
        multiByte = multiByte || length > 1;
        appendCodePoint(out.text, codePoint);
        i += length;
    }
    return multiByte;
}

// Windows-1252 from 0x80 to 0x9F; 0 marks the five bytes it leaves undefined.
constexpr std::array<char16_t, 32> kWindows1252High = {
    0x20AC, 0,      0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0,      0x017D, 0,      0,      0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0,      0x017E, 0x0178,
};

void decodeWindows1252(const QByteArray& bytes, Decoded& out)
{
    out.text.clear();
    out.bad.clear();
    out.text.reserve(bytes.size());
    for (const char c : bytes) {
        const auto byte = static_cast<unsigned char>(c);
        char16_t unit = byte;
        if (byte >= 0x80 && byte <= 0x9F)
            unit = kWindows1252High[byte - 0x80];
        if (unit == 0 && byte != 0) {
            out.bad.push_back(out.text.size());
            unit = kReplacement;
        }
        out.text.append(QChar(unit));
    }
}

Decoded decode(const QByteArray& bytes)
{
    Decoded out;
    if (bytes.startsWith("\xEF\xBB\xBF")) {
        out.encoding = TextEncoding::Utf8WithBom;
        decodeUtf8(bytes, 3, out);
        out.badWhy = QStringLiteral("byte non validi in UTF-8 (il file dichiara UTF-8 ma mescola un'altra "
                                    "codifica)");
        return out;
    }
    const bool multiByte = decodeUtf8(bytes, 0, out);
    if (out.bad.isEmpty())
        return out;
    if (multiByte) {
        // Some lines are UTF-8 and others are not: reading them all one way or the other would change
        // letters without a word, so the lines that do not fit are refused.
        out.badWhy = QStringLiteral("byte non validi in UTF-8 (il file mescola UTF-8 e un'altra codifica)");
        return out;
    }
    out.encoding = TextEncoding::Windows1252;
    decodeWindows1252(bytes, out);
    out.badWhy = QStringLiteral("byte non definito in Windows-1252 (il file non è né UTF-8 né Windows-1252)");
    return out;
}

// The separator of the first line, outside quotes: ';' unless ',' is used more.
QChar separatorOf(const QString& text)
{
    int semicolons = 0;
    int commas = 0;
    bool quoted = false;
    for (const QChar c : text) {
        if (c == u'"')
            quoted = !quoted;
        else if (!quoted && (c == u'\n' || c == u'\r'))
            break;
        else if (!quoted && c == u';')
            ++semicolons;
        else if (!quoted && c == u',')
            ++commas;
    }
    return commas > semicolons ? QChar(u',') : QChar(u';');
}

class Parser
{
public:
    Parser(const Decoded& decoded, CsvText& out)
        : m_text(decoded.text), m_bad(decoded.bad), m_badWhy(decoded.badWhy), m_out(out)
    {
    }

    void run()
    {
        const qsizetype n = m_text.size();
        while (m_pos < n) {
            CsvRecord record;
            record.line = m_line;
            if (!readRecord(record))
                return;
            bool empty = true;
            for (const QString& field : record.fields)
                empty = empty && field.isEmpty();
            if (!empty)
                m_out.records.push_back(std::move(record));
        }
    }

    // Starts reading on the second line, the first one being at most length characters long.
    void skipFirstLine(qsizetype length)
    {
        m_pos = length;
        skipLineBreak();
    }

private:
    bool atLineEnd(qsizetype at) const { return m_text[at] == u'\n' || m_text[at] == u'\r'; }

    // Moves past the line break at m_pos (CR LF, LF or a lone CR), counting it.
    void skipLineBreak()
    {
        if (m_text[m_pos] == u'\r' && m_pos + 1 < m_text.size() && m_text[m_pos + 1] == u'\n')
            ++m_pos;
        ++m_pos;
        ++m_line;
    }

    void checkBytes(const CsvRecord& record, qsizetype from, qsizetype to)
    {
        bool reported = false;
        while (m_nextBad < m_bad.size() && m_bad[m_nextBad] < to) {
            if (m_bad[m_nextBad] >= from && !reported) {
                m_out.faults.push_back({record.line, int(record.fields.size()), m_badWhy});
                reported = true;
            }
            ++m_nextBad;
        }
    }

    // False when the file ended inside quotes: nothing after can be told apart.
    bool readRecord(CsvRecord& record)
    {
        const qsizetype n = m_text.size();
        const QChar separator = m_out.separator;
        for (;;) {
            const qsizetype from = m_pos;
            QString field;
            if (m_pos < n && m_text[m_pos] == u'"') {
                ++m_pos;
                for (;;) {
                    if (m_pos >= n) {
                        m_out.faults.push_back({record.line, int(record.fields.size()),
                                                QStringLiteral("virgolette aperte e mai chiuse")});
                        return false;
                    }
                    const QChar c = m_text[m_pos];
                    if (c == u'"') {
                        if (m_pos + 1 < n && m_text[m_pos + 1] == u'"') {
                            field.append(u'"');
                            m_pos += 2;
                            continue;
                        }
                        ++m_pos;
                        break;
                    }
                    if (c == u'\n' || (c == u'\r' && !(m_pos + 1 < n && m_text[m_pos + 1] == u'\n')))
                        ++m_line;
                    field.append(c);
                    ++m_pos;
                }
                if (m_pos < n && m_text[m_pos] != separator && !atLineEnd(m_pos)) {
                    m_out.faults.push_back(
                        {record.line, int(record.fields.size()),
                         QStringLiteral("testo dopo le virgolette che chiudono il campo")});
                    while (m_pos < n && m_text[m_pos] != separator && !atLineEnd(m_pos))
                        ++m_pos;
                }
            } else {
                const qsizetype start = m_pos;
                while (m_pos < n && m_text[m_pos] != separator && !atLineEnd(m_pos))
                    ++m_pos;
                field = m_text.mid(start, m_pos - start);
            }
            checkBytes(record, from, m_pos);
            record.fields.push_back(std::move(field));
            if (m_pos < n && m_text[m_pos] == separator) {
                ++m_pos;
                if (m_pos >= n)
                    record.fields.push_back(QString());
                else
                    continue;
            }
            if (m_pos < n)
                skipLineBreak();
            return true;
        }
    }

    const QString& m_text;
    const QVector<qsizetype>& m_bad;
    const QString& m_badWhy;
    CsvText& m_out;
    qsizetype m_pos = 0;
    qsizetype m_nextBad = 0;
    int m_line = 1;
};

} // namespace

QString encodingName(TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::Utf8:
        return QStringLiteral("UTF-8");
    case TextEncoding::Utf8WithBom:
        return QStringLiteral("UTF-8 con BOM");
    case TextEncoding::Windows1252:
        return QStringLiteral("Windows-1252");
    }
    return {};
}

CsvText readCsv(const QByteArray& bytes)
{
    CsvText out;
    // UTF-16 (what some spreadsheets call "Unicode text") and binary files hold NUL bytes, which no CSV of
    // ours does: read as either encoding they would give a line of garbage per row.
    if (bytes.startsWith("\xFF\xFE") || bytes.startsWith("\xFE\xFF") || bytes.contains('\0')) {
        out.faults.push_back(
            {0, -1,
             QStringLiteral("il file non è un testo CSV in UTF-8 o Windows-1252 (forse "
                            "UTF-16 o un foglio di calcolo non esportato): salvarlo come CSV")});
        return out;
    }
    const Decoded decoded = decode(bytes);
    out.encoding = decoded.encoding;
    Parser parser(decoded, out);
    // Excel reads, and some programs write for it, a first line "sep=;" that names the separator.
    const QString& text = decoded.text;
    if (text.size() >= 6 && text.startsWith(QLatin1String("sep="), Qt::CaseInsensitive) &&
        (text[5] == u'\n' || text[5] == u'\r')) {
        out.separator = text[4];
        parser.skipFirstLine(5);
    } else {
        out.separator = separatorOf(text);
    }
    parser.run();
    return out;
}

} // namespace xv::data
