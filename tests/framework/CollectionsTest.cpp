// The collections against the standard library's, by random operations.
#include "vnbytstr/framework/Arrays.h"
#include "vnbytstr/framework/StringList.h"

#include <gtest/gtest.h>

#include <iterator>
#include <list>
#include <map>
#include <random>
#include <string>

namespace {

template <class Call>
void ExpectInvalidArgument(Call&& call) {
    try {
        call();
        ADD_FAILURE() << "nothing was thrown";
    } catch (CInvalidArgException* error) {
        error->Delete();
    }
}

std::mt19937 randomSource{815};

int Number(int low, int high) {
    return std::uniform_int_distribution<int>(low, high)(randomSource);
}
std::string Word() { return std::to_string(Number(0, 99)); }

template <class Array>
std::vector<std::string> Content(const Array& array) {
    std::vector<std::string> content;
    content.reserve(static_cast<std::size_t>(array.GetSize()));
    for (int i = 0; i < array.GetSize(); ++i)
        content.emplace_back(array[i]);
    return content;
}

TEST(Arrays, RandomOperations) {
    CStringArray own;
    std::vector<std::string> model;
    const auto grow = [&](int index) {
        model.resize(std::max(model.size(), static_cast<std::size_t>(index)));
    };
    for (int step = 0; step < 20000; ++step) {
        const int size = static_cast<int>(model.size());
        const int index = Number(0, size + 2);
        const std::string word = Word();
        switch (Number(0, 8)) {
        case 0:
            EXPECT_EQ(own.Add(word.c_str()), size);
            model.push_back(word);
            break;
        case 1:
            own.SetAtGrow(index, word.c_str());
            grow(index + 1);
            model[static_cast<std::size_t>(index)] = word;
            break;
        case 2: {
            const int count = Number(0, 3);
            own.InsertAt(index, word.c_str(), count);
            if (count > 0)
                grow(index);
            model.insert(model.begin() + std::min<int>(index, static_cast<int>(model.size())),
                         static_cast<std::size_t>(count), word);
            break;
        }
        case 3: {
            const int count = Number(0, 4);
            if (index + count > size) {
                ExpectInvalidArgument([&] { own.RemoveAt(index, count); });
                break;
            }
            own.RemoveAt(index, count);
            model.erase(model.begin() + index, model.begin() + index + count);
            break;
        }
        case 4:
            if (index < size) { // an element of the array itself
                own.InsertAt(0, own[index]);
                model.insert(model.begin(), std::string(model[static_cast<std::size_t>(index)]));
            }
            break;
        case 5:
            own.SetSize(index, Number(-1, 5));
            model.resize(static_cast<std::size_t>(index));
            break;
        case 6: {
            const auto copy = model;
            EXPECT_EQ(own.Append(own), size);
            model.insert(model.end(), copy.begin(), copy.end());
            break;
        }
        case 7: {
            CStringArray other;
            other.Copy(own);
            own.FreeExtra();
            own.InsertAt(index, &other);
            const auto copy = model;
            if (!copy.empty())
                grow(index);
            model.insert(model.begin() + std::min(index, static_cast<int>(model.size())),
                         copy.begin(), copy.end());
            break;
        }
        default:
            ExpectInvalidArgument([&] { own[size + index] = "x"; });
            ExpectInvalidArgument([&] { own.SetAt(-1, "x"); });
            break;
        }
        if (model.size() > 200) {
            own.RemoveAll();
            model.clear();
        }
        ASSERT_EQ(Content(own), model) << "step " << step;
    }
}

TEST(Arrays, NewElementsAreZero) {
    CUIntArray numbers;
    numbers.SetAtGrow(3, 7);
    numbers.SetSize(2);
    numbers.SetSize(5); // over the place where the 7 was
    EXPECT_EQ(numbers[3], 0u);
    EXPECT_EQ(numbers.GetUpperBound(), 4);
    CObArray objects;
    objects.SetSize(2);
    EXPECT_EQ(objects[1], nullptr);
    EXPECT_STREQ(objects.GetRuntimeClass()->m_lpszClassName, "CObArray");
    ExpectInvalidArgument([&] { objects.SetSize(-1); });
}

TEST(StringList, RandomOperations) {
    CStringList own;
    std::list<std::string> model;
    for (int step = 0; step < 20000; ++step) {
        const std::string word = Word();
        const int index = Number(0, static_cast<int>(model.size()));
        const POSITION position = own.FindIndex(index);
        const auto place = std::next(model.begin(), index);
        ASSERT_EQ(position == nullptr, place == model.end());
        switch (Number(0, 7)) {
        case 0:
            own.AddHead(word.c_str());
            model.push_front(word);
            break;
        case 1:
            own.InsertBefore(position, word.c_str());
            model.insert(position != nullptr ? place : model.begin(), word);
            break;
        case 2:
            own.InsertAfter(position, word.c_str());
            model.insert(position != nullptr ? std::next(place) : place, word);
            break;
        case 3:
            if (position != nullptr) {
                own.RemoveAt(position);
                model.erase(place);
            }
            break;
        case 4: {
            const auto copy = model;
            own.AddHead(&own);
            model.insert(model.begin(), copy.begin(), copy.end());
            break;
        }
        case 5: {
            const auto copy = model;
            own.AddTail(&own);
            model.insert(model.end(), copy.begin(), copy.end());
            break;
        }
        case 6:
            if (!model.empty()) {
                EXPECT_EQ(own.RemoveHead(), model.front().c_str());
                model.pop_front();
            }
            if (!model.empty()) {
                EXPECT_EQ(own.RemoveTail(), model.back().c_str());
                model.pop_back();
            }
            break;
        default: {
            const auto from = position != nullptr ? std::next(place) : model.begin();
            const auto found = std::find(from, model.end(), word);
            const POSITION ownFound = own.Find(word.c_str(), position);
            const auto foundIndex = static_cast<int>(std::distance(model.begin(), found));
            EXPECT_EQ(ownFound, own.FindIndex(foundIndex));
            break;
        }
        }
        if (model.size() > 100) {
            own.RemoveAll();
            model.clear();
        }
        std::list<std::string> forward;
        for (POSITION at = own.GetHeadPosition(); at != nullptr;)
            forward.emplace_back(own.GetNext(at));
        std::list<std::string> backward;
        for (POSITION at = own.GetTailPosition(); at != nullptr;)
            backward.emplace_front(own.GetPrev(at));
        ASSERT_EQ(forward, model) << "step " << step;
        ASSERT_EQ(backward, model) << "step " << step;
        ASSERT_EQ(own.GetCount(), static_cast<int>(model.size()));
    }
    own.RemoveAll();
    ExpectInvalidArgument([&] { own.RemoveHead(); });
    ExpectInvalidArgument([&] { own.GetTail(); });
}

} // namespace
