// The dispatcher of .sub files, on a descriptor and on a path.
#include "subtitle/SubtitleParserSUB.h"

#include <unistd.h>

#include "fuzz/Drivers.h"

namespace {

using namespace android;

const SubtitleParser* delegateOf(const SubtitleParser& parser) {
    return static_cast<const SubtitleParserSUB&>(parser).m_pParser;
}

void playDescriptor(fuzz::Input in) {
    const fuzz::File file(in);
    auto parser = std::make_unique<SubtitleParserSUB>(file.fd(), 0, 0);
    const int duplicate = parser->u32FileFD;
    fuzz::play(std::move(parser), in, delegateOf);
    close(duplicate);  // its owner leaves it open
}

void playPath(fuzz::Input in) {
    fuzz::File file(in);
    fuzz::play(std::make_unique<SubtitleParserSUB>(reinterpret_cast<U8*>(file.path())), in, delegateOf);
}

}  // namespace

const std::vector<fuzz::Driver> fuzz::drivers = {{"player", playDescriptor, fuzz::mutateText},
                                                 {"path", playPath, fuzz::mutateText}};
