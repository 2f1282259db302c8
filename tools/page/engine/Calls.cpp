#include "Calls.h"

#include <map>

#include "Film.h"
#include "Program.h"
#include "tools/vxsub/Errors.h"
#include "tools/vxsub/Json.h"
#include "tools/vxsub/Time.h"

namespace page {
namespace {

struct Desk {
    std::map<unsigned, std::unique_ptr<Film>> films;
    Arrays arrays;
};

Desk& desk() {
    static Desk one;
    return one;
}

Film& filmOf(const Json& request) { return *desk().films.at(request.at("id").get<unsigned>()); }

vxsub::OpenOptions optionsFrom(const Json& request) {
    vxsub::OpenOptions options;
    options.path = request.at("name");
    options.language = request.at("language");
    options.quiet = true;
    const std::string codePage = request.at("codePage"), rate = request.at("framesPerSecond");
    if (!codePage.empty()) options.native = vxsub::findNativeCharset(codePage);
    if (!codePage.empty() && options.native == nullptr) throw vxsub::UsageError(codePage + " is no known code page");
    if (!rate.empty()) options.frameRate = vxsub::parseFrameRate(rate);
    if (!rate.empty() && !options.frameRate)
        throw vxsub::UsageError(rate + " is no frame rate; write 25, 23.976 or the like, from 1 to 999");
    return options;
}

Json open(const Json& request) {
    forgetSettings();
    const auto id = request.at("id").get<unsigned>();
    desk().films.erase(id);  // the old one makes room first
    auto film = std::make_unique<Film>(request.at("folder").get<std::string>(), optionsFrom(request),
                                       vxsub::Size{request.at("surfaceWidth"), request.at("surfaceHeight")});
    Json facts = film->facts(desk().arrays);
    desk().films[id] = std::move(film);
    return facts;
}

Json close(const Json& request) {
    desk().films.erase(request.at("id").get<unsigned>());
    return Json::object();
}

Json choice(const std::string& word, const std::string& name) { return {{"word", word}, {"name", name}}; }

Json vocabulary(const Json&) {
    Json answer = {{"version", VXSUB_VERSION}, {"languages", Json::array()}, {"codePages", Json::array()}};
    answer["languages"].push_back(choice("", "not set"));
    answer["languages"].push_back(choice("big5", "Big5 (traditional Chinese)"));
    for (const vxsub::CharsetRef& charset : vxsub::libraryCharsets())
        answer["codePages"].push_back(choice(charset->option, charset->name));
    for (const char* name : {"WINDOWS-1250", "WINDOWS-1251", "WINDOWS-1253", "WINDOWS-1254", "WINDOWS-1255",
                             "WINDOWS-1257", "WINDOWS-1258", "KOI8-R", "CP874", "CP932", "EUC-JP", "UHC", "GB18030"})
        if (vxsub::findNativeCharset(name) != nullptr) answer["codePages"].push_back(choice(name, name));
    for (const vxsub::Format& format : vxsub::formats())
        answer["formats"].push_back({{"word", format.type}, {"name", format.name}, {"endings", format.extensions}});
    for (const vxsub::MarkKind& kind : vxsub::kMarkKinds)
        answer["marks"].push_back(
            {{"letter", std::string(1, kind.letter)}, {"word", kind.word}, {"meaning", kind.meaning}});
    return answer;
}

constexpr struct {
    const char* name;
    Json (*run)(const Json& request);
} kCalls[] = {
    {"vocabulary", vocabulary},
    {"open", open},
    {"close", close},
    {"texts", [](const Json& r) { return filmOf(r).texts(r.at("from"), r.at("count")); }},
    {"entry", [](const Json& r) { return filmOf(r).entry(r.at("index"), desk().arrays); }},
    {"search", [](const Json& r) { return filmOf(r).search(r.at("words"), desk().arrays); }},
    {"at", [](const Json& r) { return filmOf(r).at(r.at("track"), r.at("time")); }},
    {"picture", [](const Json& r) { return filmOf(r).picture(r.at("index"), desk().arrays); }},
    {"log", [](const Json& r) { return filmOf(r).log(); }},
    {"sourceFacts", [](const Json& r) { return filmOf(r).sourceFacts(); }},
    {"source", [](const Json& r) { return filmOf(r).lines(r.at("line"), r.at("count")); }},
    {"lineAt", [](const Json& r) { return Json(filmOf(r).lineAt(r.at("offset"))); }},
    {"run", [](const Json& r) { return Json(runProgram(r.at("args"))); }},
};

}  // namespace

std::string call(const char* text) try {
    desk().arrays.clear();
    const Json request = Json::parse(text);
    for (const auto& row : kCalls)
        if (request.at("do") == row.name) return vxsub::toText({{"answer", row.run(request)}});
    return vxsub::toText({{"error", "there is no such call"}});
} catch (const std::exception& error) {
    return vxsub::toText({{"error", error.what()}});
}

}  // namespace page
