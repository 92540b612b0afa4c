// Reading the resources of any bytes: what is listed is there, once and not empty, and no longer
// than the file is.
#include "fuzz/FuzzInput.h"
#include "src/resources/PeResources.h"

#include <algorithm>

using namespace vnbytstr;
using fuzz::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    detail::PeResources resources;
    const bool isGood = resources.Parse({data, data + size});
    const std::vector<UINT> ids = resources.GetStringIds();
    Require(isGood || ids.empty());
    Require(std::adjacent_find(ids.begin(), ids.end(), std::greater_equal<>()) == ids.end());
    Require(ids.empty() || ids.back() <= 0xFFFF);
    Require(resources.GetFileDescription().size() <= size / 2);
    std::u16string text;
    for (const UINT id : ids)
        Require(resources.FindString(id, text) && !text.empty() && text.size() <= size / 2);
    return 0;
}
