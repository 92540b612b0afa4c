// A value larger than memory should hold, a stream that grows by itself, and rows of a query.
#include <vnbytstr/vnbytstr.h>

#include <cstdio>

namespace {

void UseStore() {
    CByteStore store; // at most 64 pages of 32 KiB in memory, the rest in a swap file
    BYTE block[4096];
    for (DWORD i = 0; i < 4096; ++i) {
        for (BYTE& byte : block)
            byte = static_cast<BYTE>(i);
        store.Concat(block, sizeof block);
    }
    store.SetDWord(1'000'000, 0xCAFEBABE); // big-endian
    std::printf("store: %u bytes, 0xCAFEBABE at %u, %s\n", store.GetLength(),
                store.Find(CByteStream("CAFEBABE")),
                store.GetSwappedPageCount() > 0 ? "most of it in a swap file" : "all in memory");
    store.CopyToFile("store.bin"); // the store keeps it; SaveToFile would move it
}

void UseStream() {
    const CByteStream small("48656C6C6F"); // from hex text; up to 256 KiB stay in memory
    CByteStream copy = small.Left(4);
    copy.ConcatByte('!');
    CString hex;
    copy.CopyToHex(0, hex, 0);
    std::printf("stream: %s, %s\n", static_cast<const char*>(hex),
                copy.IsAllInBuffer() ? "in memory" : "in a store");
}

void UseRows() {
    CRowStore rows(3); // columns; one cache of 2 MiB for any number of rows
    for (int i = 0; i < 100'000; ++i) {
        rows.BeginRow();
        rows.AppendInteger(i);
        rows.AppendText("customer " + std::to_string(i % 1000));
        i % 2 ? rows.AppendNull() : rows.AppendReal(i / 4.0);
        rows.EndRow();
    }
    CRowStoreColumn names(rows, 1);
    std::vector<DWORD> order;
    CRowSort::Sort(names, order, true); // descending
    const CRowValue first = rows.GetValue(order.front(), 1);
    std::printf("rows: %u, the last name is %.*s\n", rows.GetRowCount(),
                static_cast<int>(first.GetText().size()), first.GetText().data());
}

} // namespace

int main() {
    try {
        UseStore();
        UseStream();
        UseRows();
        return 0;
    } catch (CException* error) { // thrown by pointer, deleted by the catcher
        char text[300];
        error->GetErrorMessage(text, sizeof text);
        std::fprintf(stderr, "%s\n", text);
        error->Delete();
        return 1;
    }
}
