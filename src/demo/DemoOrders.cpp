// SPDX-License-Identifier: MIT
// The demo shop's documents: the suppliers' delivery notes, the customers' orders and their counters.
#include "DemoGenerator.h"

#include <algorithm>

namespace xv::demo {

QDate Generator::randomDay()
{
    const int span = static_cast<int>(m_firstDay.daysTo(m_options.today));
    QDate day = m_firstDay.addDays(m_dice.between(0, span));
    // The shop is closed on Sundays.
    if (day.dayOfWeek() == 7)
        day = day > m_firstDay ? day.addDays(-1) : day.addDays(1);
    return std::min(day, m_options.today);
}

std::array<QVariant, MovCount> Generator::blankRow() const
{
    std::array<QVariant, MovCount> row;
    row.fill(nullText());
    row[RowidUtente] = m_operatorRowid;
    // The order form writes every column of a line from its text cells, so an order row holds no
    // null beyond the few columns that may be empty: a 0 here, as the form writes it.
    row[RowidTestata] = 0;
    row[RowidDeposito] = 0;
    row[RowidMed] = nullNumber();
    row[RowidControparti] = nullNumber();
    row[RowidPagamento] = nullNumber();
    row[Descrizione2] = QStringLiteral("");
    row[Spedizione] = QStringLiteral("");
    row[Sconto1] = 0.0;
    row[Sconto2] = 0.0;
    row[CodiceIva] = 22;
    row[Percentuale] = 22.0;
    row[Prezzo2] = money(0);
    row[Imposta] = money(0);
    row[Tipo] = QStringLiteral("R");
    return row;
}

void Generator::copyParty(std::array<QVariant, MovCount>& row, const Party& party) const
{
    row[RowidControparti] = party.rowid;
    row[Nominativo] = party.name;
    row[CodeNominativo] = party.code;
    row[Indirizzo] = party.address;
    row[Cap] = party.cap;
    row[Comune] = party.town;
    row[Provincia] = party.province;
    row[Telefono] = party.phone;
    row[Cellulare] = party.mobile;
    row[Email] = party.email;
}

void Generator::setLine(std::array<QVariant, MovCount>& row, int riga, const Article& article, int quantity,
                        int priceCents) const
{
    const qint64 total = qint64(priceCents) * quantity;
    row[Riga] = riga;
    row[CodiceMed] = article.code;
    row[RowidMed] = article.rowid;
    row[Descrizione1] = article.description;
    row[Qta] = double(quantity);
    row[Quantita] = double(quantity);
    row[Prezzo] = money(priceCents);
    // As the form writes a line: the line amount is both the taxable amount and the line total.
    row[Totale] = money(total);
    row[Imponibile] = money(total);
}

std::vector<int> Generator::supplierArticles(int supplier) const
{
    std::vector<int> result;
    for (std::size_t i = 0; i < m_articles.size(); ++i) {
        if (m_articleSupplier[i] == supplier && !m_articles[i].assembled)
            result.push_back(static_cast<int>(i));
    }
    return result;
}

void Generator::writeDeliveries()
{
    std::vector<Delivery> deliveries;
    for (int s = 0; s < static_cast<int>(m_suppliers.size()); ++s) {
        const std::vector<int> articles = supplierArticles(s);
        // The first delivery stocks the whole range, so every bought article has a known supplier.
        Delivery first;
        first.supplier = s;
        first.date = std::min(m_firstDay.addDays(m_dice.between(1, 20)), m_options.today);
        for (std::size_t a = 0; a < articles.size(); ++a)
            first.articles.push_back(static_cast<int>(a));
        deliveries.push_back(first);
        for (int d = 1; d < kDeliveriesPerSupplier; ++d) {
            Delivery delivery;
            delivery.supplier = s;
            delivery.date = randomDay();
            std::vector<int> order(articles.size());
            for (std::size_t a = 0; a < order.size(); ++a)
                order[a] = static_cast<int>(a);
            m_dice.shuffle(order);
            order.resize(std::min<std::size_t>(order.size(), static_cast<std::size_t>(m_dice.between(2, 5))));
            std::sort(order.begin(), order.end());
            delivery.articles = order;
            deliveries.push_back(delivery);
        }
    }
    std::stable_sort(deliveries.begin(), deliveries.end(),
                     [](const Delivery& a, const Delivery& b) { return a.date < b.date; });

    BoundInsert insert(m_db, QStringLiteral("movimenti"), columnList(kMovColumns, MovCount));
    std::array<QVariant, MovCount> row = blankRow();
    int year = 0;
    int number = 0;
    for (const Delivery& delivery : deliveries) {
        if (delivery.date.year() != year) {
            year = delivery.date.year();
            number = 0;
        }
        ++number;
        const std::vector<int> articles = supplierArticles(delivery.supplier);
        row[Tipogestione] = QStringLiteral("0");
        row[Tipomovimento] = QStringLiteral("CF");
        // Delivery notes are numbered from 1 every year as orders are: the same number names an order
        // and a delivery note, which only the document type tells apart.
        row[Numero] = QString::number(number);
        row[Documento] = QStringLiteral("DDTF");
        row[Serie] = QString::number(year);
        row[DataDocumento] = stamp(delivery.date);
        row[DataReg] = stamp(delivery.date, QTime(m_dice.between(8, 12), m_dice.between(0, 59)));
        copyParty(row, m_suppliers[delivery.supplier]);
        row[Strada] = QStringLiteral("");
        int riga = 0;
        for (int a : delivery.articles) {
            const Article& article = m_articles[articles[a]];
            const int quantity = article.byWeight ? m_dice.between(2, 12) * 5 : m_dice.between(5, 50) * 10;
            setLine(row, ++riga, article, quantity, article.costCents);
            insert.run(row.data());
            ++m_summary.movimentiRows;
        }
        m_deliveryCounters[static_cast<std::size_t>(year - m_firstDay.year())] = {number, delivery.date};
    }
}

void Generator::writeOrders()
{
    const int total = std::max(0, m_options.orders);
    // Numbers are handed out as orders are registered, so they follow date and time together.
    std::vector<std::pair<QDate, int>> moments;
    moments.reserve(static_cast<std::size_t>(total));
    for (int i = 0; i < total; ++i)
        moments.emplace_back(randomDay(), m_dice.between(9 * 3600, 19 * 3600 + 59 * 60));
    std::sort(moments.begin(), moments.end());

    BoundInsert insert(m_db, QStringLiteral("movimenti"), columnList(kMovColumns, MovCount));
    std::array<QVariant, MovCount> row = blankRow();
    std::vector<int> ceremonyWeights;
    for (const Ceremony& c : kCeremonies)
        ceremonyWeights.push_back(c.weight);
    int reportedPercent = 0;
    if (m_options.progress)
        m_options.progress(0, total);

    int year = 0;
    int number = 0;
    for (int i = 0; i < total; ++i) {
        const QDate date = moments[static_cast<std::size_t>(i)].first;
        const QTime registered = QTime(0, 0).addSecs(moments[static_cast<std::size_t>(i)].second);
        if (date.year() != year) {
            year = date.year();
            number = 0;
        }
        ++number;
        const Party& customer = i == 0 || m_customers.size() == 1
                                    ? m_customers.front()
                                    : m_customers[static_cast<std::size_t>(
                                          m_dice.between(0, static_cast<int>(m_customers.size()) - 1))];
        const Ceremony& ceremony = kCeremonies[m_dice.weighted(ceremonyWeights)];
        const QDate ceremonyDay = date.addDays(m_dice.between(ceremony.minLead, ceremony.maxLead));
        const QDate pickUp = std::max(ceremonyDay.addDays(-m_dice.between(1, 7)), date.addDays(3));
        const QDate pickUpTo = pickUp.addDays(m_dice.between(0, 3));
        const QTime from(m_dice.between(9, 17), m_dice.chance(50) ? 0 : 30);
        const QTime to = from.addSecs(3600 * m_dice.between(1, 2));

        const std::vector<Line> lines = orderLines(i == total - 1 && total > 1);
        qint64 orderTotal = 0;
        bool cards = false;
        bool confetti = false;
        for (const Line& line : lines) {
            orderTotal += line.totalCents;
            cards = cards || line.article->family == Family::Biglietti;
            confetti = confetti || line.article->family == Family::Confetti;
        }
        const qint64 deposit = m_dice.chance(25) ? 0 : divideRounded(orderTotal * 30, 100 * 1000) * 1000;

        QString state = QStringLiteral("EMESSO");
        bool booked = false;
        if (pickUp < m_options.today && m_dice.chance(90)) {
            state = QStringLiteral("RITIRATO");
            booked = m_dice.chance(50);
        }

        row[Tipogestione] = booked ? QStringLiteral("EVENTO") : QStringLiteral("0");
        row[Tipomovimento] = booked ? QStringLiteral("ENTRATA") : QStringLiteral("CO");
        row[Numero] = QString::number(number);
        row[Documento] = QStringLiteral("COMM");
        row[Serie] = QString::number(year);
        row[DataDocumento] = stamp(date);
        row[DataReg] = stamp(date, registered);
        row[DataDal] = stamp(pickUp);
        row[OraDal] = stamp(QDate(1899, 12, 30), from);
        row[DataAl] = stamp(pickUpTo);
        row[OraAl] = stamp(QDate(1899, 12, 30), to);
        copyParty(row, customer);
        if (row[Telefono].isNull())
            row[Telefono] = QStringLiteral("");
        row[Strada] = m_dice.chance(30) ? nullText() : QVariant(QStringLiteral(""));
        row[Attrib00] = cards ? QString::number(m_dice.between(0, 2)) : QStringLiteral("");
        row[Attrib01] = m_dice.chance(30) ? QStringLiteral("1") : QStringLiteral("0");
        row[Attrib02] = confetti ? QString::number(m_dice.pick({3, 5, 5, 5, 7})) : QStringLiteral("");
        row[Attrib03] = m_dice.chance(20) ? QString::number(m_dice.between(1, 3)) : QStringLiteral("");
        row[Attrib04] = text(ceremony.name);
        row[Attrib05] = stamp(ceremonyDay);
        row[Attrib06] = ceremony.couple
                            ? QStringLiteral("%1 e %2").arg(text(m_dice.pick(kMaleNames)),
                                                            text(m_dice.pick(kFemaleNames)))
                            : text(m_dice.chance(50) ? m_dice.pick(kMaleNames) : m_dice.pick(kFemaleNames));
        row[Attrib07] = cards ? text(m_dice.pick(kCardNotes)) : QStringLiteral("");
        row[Attrib08] = text(ceremony.phrases[static_cast<std::size_t>(m_dice.between(0, 2))]);
        row[Attrib09] = m_dice.chance(15) ? QString::number(m_dice.between(1, 2)) : QStringLiteral("");
        row[Attrib10] = QStringLiteral("");
        row[StatoRiga] = state;
        row[Note] = pickUp.toString(QStringLiteral("dd/MM/yyyy"));
        row[RowidPagamento] = 1;
        row[Pagamento] = QStringLiteral("CONTANTI");
        row[Referente] = nullText();
        row[Riferimenti] = m_dice.chance(30) ? text(m_dice.pick(kReferences)) : QStringLiteral("");

        for (std::size_t l = 0; l < lines.size(); ++l) {
            const Line& line = lines[l];
            setLine(row, static_cast<int>(l) + 1, *line.article, line.quantity, line.article->priceCents);
            // The deposit and the order total are kept on the first line only.
            row[Prezzo2] = money(l == 0 ? deposit : 0);
            row[Imposta] = money(l == 0 ? orderTotal : 0);
            insert.run(row.data());
            ++m_summary.movimentiRows;
        }
        m_orderCounters[static_cast<std::size_t>(year - m_firstDay.year())] = {number, date};
        ++m_summary.orders;
        const int percent = static_cast<int>(qint64(i + 1) * 100 / total);
        if (m_options.progress && percent != reportedPercent) {
            reportedPercent = percent;
            m_options.progress(i + 1, total);
        }
    }
    writeCounters();
}

const Article& Generator::anyOf(Family family)
{
    const std::vector<int>& members = m_byFamily[static_cast<int>(family)];
    return m_articles[static_cast<std::size_t>(
        members[static_cast<std::size_t>(m_dice.between(0, static_cast<int>(members.size()) - 1))])];
}

// A favour box first, then what goes with it in the order a shop assistant writes it down.
std::vector<Line> Generator::orderLines(bool withApostrophe)
{
    std::vector<Family> extras = {Family::Astucci, Family::Confetti, Family::Biglietti, Family::Fazzoletti,
                                  Family::Bomboniere};
    if (m_dice.between(1, kLargeOrderOneIn) == 1) {
        // A large wedding: favours for several tables, sugared almonds in several colours.
        extras = {Family::Astucci,    Family::Astucci,    Family::Confetti,   Family::Confetti,
                  Family::Confetti,   Family::Biglietti,  Family::Fazzoletti, Family::Bomboniere,
                  Family::Bomboniere, Family::Bomboniere, Family::Bomboniere};
    } else {
        const int count = m_dice.weighted(kLineWeights) + 1;
        m_dice.shuffle(extras);
        extras.resize(static_cast<std::size_t>(count - 1));
    }
    std::sort(extras.begin(), extras.end(), [](Family a, Family b) {
        // Favour box extras (for the witnesses) go last.
        const auto rank = [](Family f) { return f == Family::Bomboniere ? 99 : static_cast<int>(f); };
        return rank(a) < rank(b);
    });
    const int pieces = m_dice.between(2, 15) * 10;
    std::vector<Line> lines;
    const Article* box = withApostrophe
                             ? &m_articles[static_cast<std::size_t>(indexOfCode(QStringLiteral("BOM002")))]
                             : &anyOf(Family::Bomboniere);
    lines.push_back({box, pieces, 0});
    for (Family family : extras) {
        Line line;
        line.article = &anyOf(family);
        if (family == Family::Confetti) {
            line.quantity = m_dice.between(1, 5);
        } else if (family == Family::Bomboniere) {
            while (line.article == box && m_byFamily[0].size() > 1)
                line.article = &anyOf(family);
            line.quantity = m_dice.between(1, 10);
        } else {
            line.quantity = pieces;
        }
        lines.push_back(line);
    }
    for (Line& line : lines)
        line.totalCents = qint64(line.article->priceCents) * line.quantity;
    return lines;
}

void Generator::writeCounters()
{
    BoundInsert insert(m_db, QStringLiteral("numeratori"),
                       {QStringLiteral("codtipodoc"), QStringLiteral("tipodocumento"),
                        QStringLiteral("serie"), QStringLiteral("numero"), QStringLiteral("dataultdoc")});
    for (int y = 0; y < kYears; ++y) {
        const QString serie = QString::number(m_firstDay.year() + y);
        const Counter& order = m_orderCounters[y];
        insert.run(QVariantList{QStringLiteral("CO"), QStringLiteral("COMM"), serie, order.number,
                                order.last.isValid() ? QVariant(stamp(order.last)) : nullText()});
        const Counter& delivery = m_deliveryCounters[y];
        insert.run(QVariantList{QStringLiteral("CF"), QStringLiteral("DDTF"), serie, delivery.number,
                                delivery.last.isValid() ? QVariant(stamp(delivery.last)) : nullText()});
    }
}

} // namespace xv::demo
