// The list of a million rows of four columns against QTreeWidget, and QTreeView over a table model:
// filling, memory, sorting by text and by integer, drawing a page while scrolling, finding a row by
// its beginning; and the list with a row source, which holds no texts, against the same model. On
// the offscreen platform.
#include "bench/Rounds.h"
#include "src/charset/CodePage.h"
#include "vnbytstr/controls.h"
#include "vnbytstr/window/Application.h"

#include <QAbstractTableModel>
#include <QApplication>
#include <QCollator>
#include <QImage>
#include <QPainter>
#include <QScrollBar>
#include <QSortFilterProxyModel>
#include <QTreeView>
#include <QTreeWidget>

#include <malloc.h>

#include <array>
#include <cstdlib>
#include <memory>
#include <numeric>
#include <random>
#include <string>

using vnbytstr::bench::Contest;
using vnbytstr::bench::Contests;

namespace {

using Row = std::array<std::string, 4>;

std::vector<Row> MakeRows(int count) {
    std::mt19937 random(1);
    std::vector<Row> rows(static_cast<std::size_t>(count));
    int number = 0;
    for (Row& row : rows) {
        for (std::size_t i = 4 + random() % 8; i > 0; --i)
            row[0] += static_cast<char>("aAeEnNrRsStTlL"[random() % 14]);
        row[0] += ' ' + std::to_string(random() % 100000);
        row[1] = "city " + std::to_string(random() % 1000);
        row[2] = std::to_string(static_cast<int>(random() % 2000000) - 1000000);
        row[3] = "2024-01-" + std::to_string(10 + ++number % 20);
    }
    return rows;
}

/// A number that compares as such in a QTreeWidget.
class NumberItem : public QTreeWidgetItem {
public:
    using QTreeWidgetItem::QTreeWidgetItem;
    bool operator<(const QTreeWidgetItem& other) const override {
        const int column = treeWidget()->sortColumn();
        return column == 2 ? text(2).toLongLong() < other.text(2).toLongLong()
                           : QTreeWidgetItem::operator<(other);
    }
};

class TableModel : public QAbstractTableModel {
public:
    explicit TableModel(const std::vector<Row>& rows) {
        m_rows.reserve(rows.size());
        for (const Row& row : rows)
            m_rows.push_back({QString::fromStdString(row[0]), QString::fromStdString(row[1]),
                              QString::fromStdString(row[2]), QString::fromStdString(row[3])});
    }
    int rowCount(const QModelIndex& parent) const override {
        return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
    }
    int columnCount(const QModelIndex&) const override { return 4; }
    QVariant data(const QModelIndex& index, int role) const override {
        if (role != Qt::DisplayRole)
            return {};
        return m_rows[static_cast<std::size_t>(index.row())]
                     [static_cast<std::size_t>(index.column())];
    }
    void sort(int column, Qt::SortOrder) override {
        beginResetModel();
        const auto at = static_cast<std::size_t>(column);
        if (column == 2) {
            std::stable_sort(m_rows.begin(), m_rows.end(), [at](const auto& a, const auto& b) {
                return a[at].toLongLong() < b[at].toLongLong();
            });
        } else {
            QCollator collator;
            collator.setCaseSensitivity(Qt::CaseInsensitive);
            std::vector<std::pair<QCollatorSortKey, std::size_t>> keys;
            keys.reserve(m_rows.size());
            for (std::size_t i = 0; i < m_rows.size(); ++i)
                keys.emplace_back(collator.sortKey(m_rows[i][at]), i);
            std::stable_sort(keys.begin(), keys.end(), [](const auto& a, const auto& b) {
                return a.first.compare(b.first) < 0;
            });
            std::vector<std::array<QString, 4>> sorted;
            sorted.reserve(m_rows.size());
            for (const auto& key : keys)
                sorted.push_back(std::move(m_rows[key.second]));
            m_rows.swap(sorted);
        }
        endResetModel();
    }

private:
    std::vector<std::array<QString, 4>> m_rows;
};

/// The same rows, which the list asks for.
class Rows : public CListRowSource {
public:
    explicit Rows(const std::vector<Row>& rows) : m_rows(rows) {}
    int GetRowCount() override { return static_cast<int>(m_rows.size()); }
    void GetCell(int row, int column, std::string& text) override {
        text = m_rows[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)];
    }

private:
    const std::vector<Row>& m_rows;
};

class Ours {
public:
    Ours() {
        m_parent.CreateEx(0, nullptr, "", WS_OVERLAPPEDWINDOW | WS_VISIBLE, CRect(0, 0, 640, 640),
                          nullptr, 0);
        Make();
    }
    void Make() {
        m_list = std::make_unique<CListBoxEx>();
        m_list->Create("LISTBOX", "",
                       WS_CHILD | WS_VISIBLE | WS_VSCROLL | LBS_OWNERDRAWFIXED | LBS_HASSTRINGS |
                           LBS_NOINTEGRALHEIGHT,
                       CRect(0, 0, 600, 600), &m_parent, 1);
        m_list->SetNumColumns(4);
        for (int column = 0; column < 4; ++column)
            m_list->SetColumnWidth(column, 140);
        m_list->SetColumnType(2, 1);
    }
    void Fill(const std::vector<Row>& rows) {
        for (const Row& row : rows)
            m_list->AddStringItems(row[0].c_str(), row[1].c_str(), row[2].c_str(), row[3].c_str());
    }
    CListBoxEx& List() { return *m_list; }

private:
    CWnd m_parent;
    std::unique_ptr<CListBoxEx> m_list;
};

void Fill(QTreeWidget& tree, const std::vector<Row>& rows) {
    tree.clear();
    tree.setColumnCount(4);
    tree.setUniformRowHeights(true);
    QList<QTreeWidgetItem*> items;
    items.reserve(static_cast<qsizetype>(rows.size()));
    for (const Row& row : rows)
        items.append(new NumberItem(
            QStringList{QString::fromStdString(row[0]), QString::fromStdString(row[1]),
                        QString::fromStdString(row[2]), QString::fromStdString(row[3])}));
    tree.addTopLevelItems(items);
}

/// Bytes in use, of the heap and of what it mapped.
std::size_t InUse() {
    const auto info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

void PrintMemory(const std::vector<Row>& rows) {
    std::size_t texts = 0;
    for (const Row& row : rows)
        for (const std::string& value : row)
            texts += value.size();
    const auto count = static_cast<double>(rows.size());
    std::size_t before = InUse();
    {
        Ours ours;
        ours.Fill(rows);
        std::printf("bytes a row: texts %.1f, ours %.1f", static_cast<double>(texts) / count,
                    static_cast<double>(InUse() - before) / count);
    }
    before = InUse();
    QTreeWidget tree;
    Fill(tree, rows);
    std::printf(", QTreeWidget %.1f (goal: texts + 32)\n",
                static_cast<double>(InUse() - before) / count);
}

/// Scrolls by a page and draws it, so many times.
template <class Scroll>
std::function<void()> Pages(QWidget* widget, Scroll scroll, int turns) {
    return [=] {
        QImage image(600, 600, QImage::Format_ARGB32_Premultiplied);
        for (int i = 0; i < turns; ++i) {
            scroll(i);
            widget->render(&image);
        }
    };
}

} // namespace

int main(int argc, char** argv) {
    qputenv("QT_QPA_PLATFORM", "offscreen");
    AfxInitWindows(&argc, argv);
    const vnbytstr::ScopedCodePage utf8(65001);
    const char* wanted = std::getenv("VNBYTSTR_BENCH_ROWS");
    const int count = wanted != nullptr ? std::atoi(wanted) : 1'000'000;
    const std::vector<Row> rows = MakeRows(count);
    PrintMemory(rows);

    Ours ours;
    QTreeWidget tree;
    tree.resize(600, 600);
    std::unique_ptr<TableModel> model;
    QTreeView view;
    view.setUniformRowHeights(true);
    view.setRootIsDecorated(false);
    view.resize(600, 600);
    const auto refillOurs = [&] {
        ours.List().ResetContent();
        ours.Fill(rows);
    };
    const auto refillTree = [&] {
        tree.setSortingEnabled(false);
        Fill(tree, rows);
    };
    const auto refillModel = [&] {
        auto fresh = std::make_unique<TableModel>(rows);
        view.setModel(fresh.get());
        model = std::move(fresh);
    };

    Contests contests;
    const double amount = count;
    contests.Add({"fill (per row)",
                  amount,
                  Contest::Nanoseconds,
                  {{"ours", [&] { ours.Fill(rows); }, [&] { ours.List().ResetContent(); }},
                   {"QTreeWidget", [&] { Fill(tree, rows); }, [&] { tree.clear(); }}},
                  10,
                  3});
    for (const int column : {0, 2})
        contests.Add({column == 0 ? "sort by text (per row)" : "sort by integer (per row)",
                      amount,
                      Contest::Nanoseconds,
                      {{"ours", [&, column] { ours.List().Sort(column); }, refillOurs},
                       {"QTreeWidget", [&, column] { tree.sortItems(column, Qt::AscendingOrder); },
                        refillTree},
                       {"table model", [&, column] { model->sort(column, Qt::AscendingOrder); },
                        refillModel}},
                      0,
                      3});
    constexpr int kPages = 50;
    contests.Add({"draw a page while scrolling",
                  kPages,
                  Contest::Nanoseconds,
                  {{"ours",
                    [&] {
                        Pages(
                            ours.List().GetWidget(),
                            [&](int i) {
                                ours.List().SendMessage(
                                    LB_SETTOPINDEX, static_cast<WPARAM>((i * 977) % (count / 2)));
                            },
                            kPages)();
                    },
                    refillOurs},
                   {"QTreeView",
                    [&] {
                        Pages(
                            &view,
                            [&](int i) {
                                view.scrollTo(model->index((i * 977) % (count / 2), 0),
                                              QAbstractItemView::PositionAtTop);
                            },
                            kPages)();
                    },
                    refillModel}},
                  2,
                  5});
    contests.Add({"find by beginning, last row",
                  1,
                  Contest::Nanoseconds,
                  {{"ours",
                    [&] {
                        ours.List().SendMessage(LB_SETCURSEL, 0);
                        const LRESULT found = ours.List().SendMessage(
                            LB_SELECTSTRING, 0, reinterpret_cast<LPARAM>("zzz"));
                        if (found != count)
                            std::printf("not found\n");
                    },
                    [&] {
                        refillOurs();
                        ours.List().AddStringItems("Zzz the last", "", "", "");
                    }}},
                  0,
                  5});
    // The list of a source: its own, since the other one holds texts.
    Rows source(rows);
    Ours sourced;
    const auto show = [](QWidget* widget) {
        QImage image(600, 600, QImage::Format_ARGB32_Premultiplied);
        widget->render(&image);
    };
    std::unique_ptr<TableModel> other;
    contests.Add({"show the rows of a source",
                  1,
                  Contest::Nanoseconds,
                  {{"ours",
                    [&] {
                        sourced.List().SetRowSource(&source);
                        show(sourced.List().GetWidget());
                    },
                    [&] { sourced.List().SetRowSource(nullptr); }},
                   {"QTreeView",
                    [&] {
                        view.setModel(other.get());
                        show(&view);
                    },
                    [&] {
                        view.setModel(nullptr);
                        other = std::make_unique<TableModel>(rows);
                    }}},
                  1,
                  5});
    contests.Add({"draw a page of a source while scrolling",
                  kPages,
                  Contest::Nanoseconds,
                  {{"ours",
                    [&] {
                        Pages(
                            sourced.List().GetWidget(),
                            [&](int i) {
                                sourced.List().SendMessage(
                                    LB_SETTOPINDEX, static_cast<WPARAM>((i * 977) % (count / 2)));
                            },
                            kPages)();
                    },
                    [&] { sourced.List().SetRowSource(&source); }},
                   {"QTreeView",
                    [&] {
                        Pages(
                            &view,
                            [&](int i) {
                                view.scrollTo(other->index((i * 977) % (count / 2), 0),
                                              QAbstractItemView::PositionAtTop);
                            },
                            kPages)();
                    },
                    [&] {
                        other = std::make_unique<TableModel>(rows);
                        view.setModel(other.get());
                    }}},
                  2,
                  5});
    // The filter: each keystroke of a text, typed into column 0. Each contender counts what it shows.
    constexpr const char* kTyped = "tan 1";
    QSortFilterProxyModel proxy;
    proxy.setFilterCaseSensitivity(Qt::CaseInsensitive);
    proxy.setFilterKeyColumn(0);
    int oursShown = 0, sourceShown = 0, proxyShown = 0;
    const auto typeInto = [&](CListBoxEx& list, std::size_t from, std::size_t to) {
        for (std::size_t length = from; length <= to; ++length) {
            list.SetColumnFilter(0, std::string(kTyped, length).c_str());
            while (!list.IsFilterDone())
                AfxPumpMessages(1);
        }
        return list.GetCount();
    };
    // The proxy's map is built afresh for each stroke: changing the filter of one that has a map
    // takes it minutes with a million rows (the contest of 100,000 rows does that).
    const auto typeIntoProxy = [&](std::size_t from, std::size_t to) {
        for (std::size_t length = from; length <= to; ++length) {
            proxy.setSourceModel(nullptr);
            proxy.setFilterFixedString(QString::fromLatin1(kTyped, static_cast<int>(length)));
            proxy.setSourceModel(other.get());
            proxyShown = proxy.rowCount();
        }
        return proxyShown;
    };
    const auto prepareProxy = [&] {
        proxy.setSourceModel(nullptr);
        other = std::make_unique<TableModel>(rows);
    };
    const struct {
        const char* name;
        std::size_t from, to;
    } strokes[] = {{"filter, the first keystroke", 1, 1},
                   {"filter, 3 characters at once", 3, 3},
                   {"filter, 5 keystrokes (per stroke)", 1, 5}};
    for (const auto& stroke : strokes)
        contests.Add(
            {stroke.name,
             static_cast<double>(stroke.to - stroke.from + 1),
             Contest::Nanoseconds,
             {{"ours", [&, stroke] { oursShown = typeInto(ours.List(), stroke.from, stroke.to); },
               [&] {
                   ours.List().ClearFilter();
                   refillOurs();
               }},
              {"proxy model", [&, stroke] { proxyShown = typeIntoProxy(stroke.from, stroke.to); },
               prepareProxy}},
             20,
             3});
    // As a program types into a proxy that views look at: it keeps its map from stroke to stroke.
    const std::vector<Row> few(rows.begin(), rows.begin() + std::min(count, 100'000));
    Ours fewOurs;
    fewOurs.Fill(few);
    QSortFilterProxyModel live;
    live.setFilterCaseSensitivity(Qt::CaseInsensitive);
    live.setFilterKeyColumn(0);
    std::unique_ptr<TableModel> fewModel;
    contests.Add({"filter 100,000 rows, 5 keystrokes (per stroke)",
                  5,
                  Contest::Nanoseconds,
                  {{"ours", [&] { oursShown = typeInto(fewOurs.List(), 1, 5); },
                    [&] { fewOurs.List().ClearFilter(); }},
                   {"proxy model",
                    [&] {
                        for (int length = 1; length <= 5; ++length)
                            live.setFilterFixedString(QString::fromLatin1(kTyped, length));
                    },
                    [&] {
                        live.setSourceModel(nullptr);
                        fewModel = std::make_unique<TableModel>(few);
                        live.setFilterFixedString(QString());
                        live.setSourceModel(fewModel.get());
                        static_cast<void>(live.rowCount());
                    }}},
                  20,
                  3});
    contests.Add({"filter a source, 3 characters at once",
                  1,
                  Contest::Nanoseconds,
                  {{"ours", [&] { sourceShown = typeInto(sourced.List(), 3, 3); },
                    [&] {
                        sourced.List().ClearFilter();
                        sourced.List().SetRowSource(&source);
                    }},
                   {"proxy model", [&] { proxyShown = typeIntoProxy(3, 3); }, prepareProxy}},
                  20,
                  3});
    const int result = contests.Run(argc, argv);
    if (sourceShown != proxyShown)
        std::printf("the filters differ: %d, %d\n", sourceShown, proxyShown);
    view.setModel(nullptr);
    return result;
}
