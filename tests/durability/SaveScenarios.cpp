#include "tests/durability/SaveScenarios.h"

#include "tests/support/TemporaryFolder.h"
#include "vnbytstr/ByteStore.h"
#include "vnbytstr/ByteStream.h"
#include "vnbytstr/Profile.h"
#include "vnbytstr/StringPersistence.h"
#include "vnbytstr/TextEncoding.h"
#include "vnbytstr/XercesWrapper.h"
#include "vnbytstr/framework/Exception.h"
#include "vnbytstr/framework/File.h"

#include <filesystem>
#include <fstream>
#include <memory>
#include <new>
#include <random>

namespace vnbytstr::test {

namespace {

constexpr DWORD kPage = CBytePage::m_dwPageSize;
constexpr DWORD kShift = 5; // of a shifted save

std::string Random(std::size_t size, unsigned seed) {
    std::minstd_rand random(seed);
    std::string bytes(size, '\0');
    for (char& byte : bytes)
        byte = static_cast<char>(random() >> 11);
    return bytes;
}

// Made once each: they are asked for at every turn.
const std::string& LargeText(unsigned version) {
    static const std::string texts[] = {"", Random(17 * kPage + 6, 1), Random(17 * kPage + 7, 2)};
    return texts[version];
}
const std::string& SmallText(unsigned version) {
    static const std::string texts[] = {"", Random(70001, 1), Random(70002, 2)};
    return texts[version];
}
/// Of the first page the end is left out, as a page is written before the beginning of the file.
std::string Shifted(const std::string& text) {
    return text.substr(0, kPage - kShift) + text.substr(kPage);
}

using StorePtr = std::shared_ptr<CByteStore>;

StorePtr MakeStore(const std::string& text) {
    auto store = std::make_shared<CByteStore>();
    store->Concat(reinterpret_cast<const BYTE*>(text.data()), static_cast<DWORD>(text.size()));
    return store;
}

/// A store on an existing file.
StorePtr OpenStore(const std::string& name) {
    auto store = std::make_shared<CByteStore>();
    store->SetAutoDelete(0);
    store->SetFileName(name.c_str());
    return store;
}

std::string ContentOf(CByteStore& store) {
    std::string bytes(store.GetLength(), '\0');
    if (!bytes.empty())
        store.CopyTo(0, reinterpret_cast<BYTE*>(bytes.data()), 0, static_cast<DWORD>(bytes.size()));
    return bytes;
}

enum class How { Save, SaveShifted, Copy, CopyShifted };

Saving SavingOf(const StorePtr& store, How how, const std::string& name) {
    const bool isShifted = how == How::SaveShifted || how == How::CopyShifted;
    store->SetCurrentOffset(isShifted ? kShift : 0);
    return {.save =
                [=] {
                    if (how == How::Save || how == How::SaveShifted)
                        store->SaveToFile(name.c_str(), isShifted);
                    else
                        store->CopyToFile(name.c_str(), isShifted);
                },
            .content = [store] { return ContentOf(*store); }};
}

/// A new store, saved to the name `name`.
SaveScenario FromStore(const std::string& title, How how, bool isLarge, bool isNew,
                       const std::string& name = "target") {
    const auto text = isLarge ? LargeText : SmallText;
    SaveScenario scenario;
    scenario.name = title;
    scenario.target = "target";
    if (!isNew)
        scenario.before = "the old content";
    scenario.text = [=](unsigned version) {
        const std::string whole = text(version);
        return how == How::SaveShifted || how == How::CopyShifted ? Shifted(whole) : whole;
    };
    scenario.begin = [=](const Place& place, unsigned version) {
        return SavingOf(MakeStore(text(version)), how, place.home + name);
    };
    return scenario;
}

/// The same onto a link that leads to the target.
SaveScenario OntoLink(const std::string& title, How how, bool isLarge) {
    SaveScenario scenario = FromStore(title, how, isLarge, false, "link");
    scenario.prepare = [](const Place& place) {
        std::filesystem::remove(place.home + "link");
        std::filesystem::create_symlink("target", place.home + "link");
    };
    return scenario;
}

SaveScenario FromOtherDevice(const std::string& title, bool isNew) {
    SaveScenario scenario = FromStore(title, How::Save, true, isNew);
    scenario.isOtherDevice = true;
    return scenario;
}

/// Onto a file with a second name, which is written over. The new content is shorter or longer.
SaveScenario WrittenOver(const std::string& title, How how, bool isLarge) {
    SaveScenario scenario = FromStore(title, how, isLarge, false);
    scenario.before = Random(200000, 7);
    scenario.isWrittenOver = true;
    scenario.prepare = [](const Place& place) {
        std::filesystem::remove(place.home + "link");
        std::filesystem::create_hard_link(place.home + "target", place.home + "link");
    };
    return scenario;
}

SaveScenario InClosedFolder(SaveScenario scenario) {
    scenario.name += ", in a closed folder";
    scenario.isWrittenOver = scenario.isClosed = true;
    return scenario;
}

/// The file of a store, shifted, under its own name.
SaveScenario OntoOwnFile(const std::string& title, How how) {
    SaveScenario scenario;
    scenario.name = title;
    scenario.target = "target";
    scenario.before = LargeText(1);
    scenario.text = [](unsigned) { return Shifted(LargeText(1)); };
    scenario.begin = [=](const Place& place, unsigned) {
        return SavingOf(OpenStore(place.home + "target"), how, place.home + "target");
    };
    return scenario;
}

/// A file with changes, under another name: it is renamed.
SaveScenario OfAFilesStore() {
    SaveScenario scenario;
    scenario.name = "SaveToFile of a file's store, new";
    scenario.target = "target";
    scenario.text = [](unsigned version) { return LargeText(1) + std::to_string(version); };
    scenario.prepare = [](const Place& place) {
        std::ofstream(place.home + "part", std::ios::binary) << LargeText(1);
    };
    scenario.begin = [](const Place& place, unsigned version) {
        const StorePtr store = OpenStore(place.home + "part");
        store->ConcatByte(static_cast<BYTE>('0' + version));
        return SavingOf(store, How::Save, place.home + "target");
    };
    return scenario;
}

SaveScenario FlushShifted() {
    SaveScenario scenario = OntoOwnFile("Flush(1) of a file's store", How::CopyShifted);
    scenario.keeps = SaveScenario::Kill; // a flush does not wait for the disk
    scenario.begin = [](const Place& place, unsigned) {
        const StorePtr store = OpenStore(place.home + "target");
        store->SetCurrentOffset(kShift);
        return Saving{.save = [store] { store->Flush(1); },
                      .content = [store] { return ContentOf(*store); }};
    };
    return scenario;
}

SaveScenario XmlDocument(const std::string& title, bool isNew) {
    const auto value = [](unsigned version) {
        return std::string(40000, 'a') + char('0' + version);
    };
    SaveScenario scenario;
    scenario.name = title;
    scenario.target = "target.xml";
    if (!isNew)
        scenario.before = "<old/>";
    scenario.text = [=](unsigned version) {
        return "<?xml version=\"1.0\" encoding=\"utf-8\"?><root>" + value(version) + "</root>";
    };
    scenario.begin = [=](const Place& place, unsigned version) {
        auto xml = std::make_shared<CXercesWrapper>();
        if (!xml->LoadXML(("<root>" + value(version) + "</root>").c_str()))
            throw SaveRefused();
        return Saving{.save =
                          [=] {
                              if (!xml->Save((place.home + "target.xml").c_str(), false))
                                  throw SaveRefused();
                          },
                      .content =
                          [=] {
                              CString text;
                              xml->GetXML(text);
                              return "<?xml version=\"1.0\" encoding=\"utf-8\"?>" +
                                     std::string(text);
                          }};
    };
    return scenario;
}

SaveScenario Profile() {
    SaveScenario scenario;
    scenario.name = "a setting";
    scenario.target = "profile.ini";
    const std::string head = "[3/Options]\nOther=" + std::string(9000, 'x') + "\n";
    scenario.before = head + "Version=none\n";
    scenario.text = [=](unsigned version) {
        return head + "Version=" + std::to_string(version) + "\n";
    };
    scenario.begin = [](const Place&, unsigned version) {
        return Saving{.save = [version] {
            const std::string value = std::to_string(version);
            if (!VNWriteProfileString(3, "Options", "Version", value.c_str()))
                throw SaveRefused();
        }};
    };
    return scenario;
}

/// The target is the text in the ANSI code page.
SaveScenario Utf8() {
    std::string ansi, utf8;
    for (int i = 0; i < 60000; ++i) {
        ansi += "M\xE4rz ";
        utf8 += "M\xC3\xA4rz ";
    }
    SaveScenario scenario;
    scenario.name = "a text converted to UTF-8";
    scenario.target = "text";
    scenario.before = ansi;
    scenario.text = [utf8](unsigned) { return utf8; };
    scenario.begin = [](const Place& place, unsigned) {
        return Saving{.save = [place] {
            if (!ConvertToUTF8((place.home + "text").c_str()))
                throw SaveRefused();
        }};
    };
    return scenario;
}

std::vector<SaveScenario> AllScenarios() {
    return {
        FromStore("SaveToFile of a spilled store, new", How::Save, true, true),
        FromStore("SaveToFile of a spilled store, over a file", How::Save, true, false),
        FromStore("SaveToFile of a store in memory, new", How::Save, false, true),
        FromStore("SaveToFile of a store in memory, over a file", How::Save, false, false),
        FromStore("SaveToFile, shifted", How::SaveShifted, true, false),
        OntoLink("SaveToFile of a spilled store through a link", How::Save, true),
        OntoLink("SaveToFile of a store in memory through a link", How::Save, false),
        FromOtherDevice("SaveToFile to another device, new", true),
        FromOtherDevice("SaveToFile to another device, over a file", false),
        OntoOwnFile("SaveToFile onto the own file, shifted", How::SaveShifted),
        OntoOwnFile("CopyToFile onto the own file, shifted", How::CopyShifted),
        OfAFilesStore(),
        FlushShifted(),
        FromStore("CopyToFile, new", How::Copy, true, true),
        FromStore("CopyToFile over a file", How::Copy, true, false),
        FromStore("CopyToFile of a store in memory, shifted", How::CopyShifted, false, false),
        OntoLink("CopyToFile through a link", How::Copy, true),
        XmlDocument("an XML document, new", true),
        XmlDocument("an XML document over a file", false),
        WrittenOver("SaveToFile of a spilled store over a file of two names", How::Save, true),
        WrittenOver("CopyToFile over a file of two names", How::Copy, false),
        InClosedFolder(FromStore("SaveToFile of a spilled store", How::Save, true, false)),
        InClosedFolder(FromStore("SaveToFile of a store in memory", How::Save, false, false)),
        InClosedFolder(FromStore("CopyToFile", How::Copy, true, false)),
        InClosedFolder(XmlDocument("an XML document", false)),
        InClosedFolder(Utf8()),
        Profile(),
        Utf8(),
    };
}

} // namespace

const std::vector<SaveScenario>& SaveScenarios() {
    static const std::vector<SaveScenario> scenarios = [] {
        std::vector<SaveScenario> all = AllScenarios();
        if (!TemporaryFolder().Link("to", "link")) // those that save through one
            std::erase_if(all, [](const SaveScenario& each) {
                return each.name.find(" link") != std::string::npos;
            });
        return all;
    }();
    return scenarios;
}

void Prepare(const SaveScenario& scenario, const Place& place) {
    const std::string target = place.home + scenario.target, part = place.home + "part";
    if (scenario.before) {
        std::ofstream(part, std::ios::binary) << *scenario.before;
        std::filesystem::rename(part, target);
    } else {
        std::filesystem::remove(target);
    }
    if (scenario.prepare)
        scenario.prepare(place);
}

std::string ErrorOf(const std::function<void()>& action) {
    try {
        action();
    } catch (CException* error) {
        const std::string name = error->GetRuntimeClass()->m_lpszClassName;
        error->Delete();
        return name;
    } catch (const SaveRefused&) {
        return "refused";
    }
    return {};
}

} // namespace vnbytstr::test
