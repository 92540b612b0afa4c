// A row store in a forked child.
#include "tests/bytestore/StoreFixture.h"
#include "tests/support/ChildProcess.h"

#include "vnbytstr/RowStore.h"

namespace vnbytstr::test {
namespace {

class RowStoreForkTest : public StoreFixture {};

std::string TextOf(DWORD row) {
    return std::string(row % 50 == 0 ? 9000 : 100, 'a') + std::to_string(row);
}

void Append(CRowStore& store, DWORD row) {
    store.BeginRow();
    store.AppendText(TextOf(row));
    store.EndRow();
}

bool HasRows(CRowStore& store, DWORD rows) {
    for (DWORD row = 0; row < rows; ++row) {
        const std::string text = TextOf(row);
        const CRowValue value = store.GetValue(row, 0);
        std::string copy(text.size() + 1, '-');
        copy.resize(store.CopyTo(value, 0, reinterpret_cast<BYTE*>(copy.data()),
                                 static_cast<DWORD>(copy.size())));
        if (copy != text)
            return false;
    }
    return store.GetRowCount() == rows;
}

/// Also of what has not left memory yet, and of what has left it.
TEST_F(RowStoreForkTest, ChildHasItsOwnRows) {
    CRowStore store(1, 8, 4 * kPage);
    for (DWORD row = 0; row < 5000; ++row)
        Append(store, row);
    EXPECT_EQ(InChild([&] {
                  if (!HasRows(store, 5000))
                      return 1;
                  for (DWORD row = 5000; row < 9000; ++row)
                      Append(store, row);
                  store.DeleteRow(8999);
                  const bool hasRows = HasRows(store, 8999);
                  store.Empty();
                  return hasRows ? 0 : 2;
              }),
              0);
    EXPECT_TRUE(HasRows(store, 5000));
}

} // namespace
} // namespace vnbytstr::test
