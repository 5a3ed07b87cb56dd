// The control server's configuration file, and the server's life inside the library.
#include "frame/sound_manager.h"
#include "kit/host.h"

namespace {

using namespace testing;

const std::string missing = "INFO: Your websocket configuration file is missing a ";
const std::string instead = " value, we will use the default of ";
const std::string no_port = missing + "Port" + instead + "9002";
const std::string no_key = missing + "authentification_key" + instead + "Ardentvalve";
const std::string no_value = missing + "authentification_value" + instead + "517264903";

TEST(ControlServer, ReadsItsFileAndTellsWhatIsMissing) {
    const test_kit::temporary_directory files;
    test_kit::log_capture log(QNL_LOG_INFO);
    for (const char* const text : {"{}", "[]", "null", R"(["port"])"}) {
        const qnl_websocket_server server(files.write("server.json", text).c_str());
        EXPECT_THAT(server.config(), FieldsAre(9002, "", "", "", "", "Ardentvalve", "517264903"));
        EXPECT_THAT(log.take(), ElementsAre(no_port, no_key, no_value)) << text;
    }
    const std::string full = files.write("server.json", R"({"port":70000.9,"cert_file_name":"c",)"
                                                        R"("dh_params_file_name":"d","key_file_name":"k",)"
                                                        R"("passphrase":"p","authentification_key":"a"})");
    EXPECT_THAT(qnl_websocket_config::read(full.c_str()),
                FieldsAre(70000 - 65536, "c", "d", "k", "p", "a", "517264903"));
    EXPECT_THAT(log.take(), ElementsAre(no_value));
}

TEST(ControlServer, IsAbsentWithoutAUsableFileAndTheLibraryWorksOn) {
    const test_kit::temporary_directory files;
    const std::string absent = files.path_of("absent");
    const char* const disabled =
        "WARNING: You disabled the websocket server by using NULL for the websocket config file path.";
    const char* const without_it = "WARNING: The library will work properly except qnl_enable_websockets and "
                                   "qnl_send_custom_websocket_event";
    const auto start = [](const char* path) {
        test_kit::log_capture log;
        const qnl_handle handle = qnl_initialize_library(nullptr, path, {48000, 480, 1, false, 1}, nullptr);
        EXPECT_EQ(qnl_create_room(handle, 1), QNL_ERROR_NONE);
        EXPECT_EQ(handle->websocket_server(), nullptr);
        qnl_destroy_library(handle);
        std::vector<std::string> lines = log.take();
        return std::vector<std::string>(lines.begin() + 2, lines.end()); // behind those about the layouts
    };
    EXPECT_THAT(start(nullptr), ElementsAre(disabled, without_it));
    EXPECT_THAT(start(absent.c_str()), ElementsAre(without_it));
    EXPECT_THAT(start(files.path().c_str()), ElementsAre(without_it));
    const std::string deep = std::string(300, '[') + std::string(300, ']');
    for (const char* const text : {"", "{", R"({"port":"9002"})", R"({"passphrase":7})",
                                   R"({"authentification_key":null})", deep.c_str()})
        EXPECT_THAT(start(files.write("server.json", text).c_str()), ElementsAre(without_it)) << text;
}

} // namespace
