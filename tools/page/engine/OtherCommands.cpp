// Commands that are no use in a page: they need a terminal, or write what the page itself shows.
namespace CLI {
class App;
}

namespace vxsub {

struct Session;

void addPlay(CLI::App& app, Session& session);
void addPush(CLI::App& app, Session& session);
void addRender(CLI::App& app, Session& session);
void addReport(CLI::App& app, Session& session);
void addSheet(CLI::App& app, Session& session);

void addPlay(CLI::App&, Session&) {}
void addPush(CLI::App&, Session&) {}
void addRender(CLI::App&, Session&) {}
void addReport(CLI::App&, Session&) {}
void addSheet(CLI::App&, Session&) {}

}  // namespace vxsub
