#include <nlohmann/json.hpp>

#include "toolkit/quorvis/formats/Records.h"

namespace toolkit::quorvis {

namespace {

using Json = nlohmann::json;

// Passes the values on during parsing.
class Handler : public Json::json_sax_t {
  public:
    Handler(const RecordRequest& request, const ProgressCheck& checkProgress)
        : collector_(request, checkProgress) {}

    Records takeRecords() { return collector_.takeRecords(); }

    bool null() override { return pass(std::nullopt); }
    bool boolean(bool value) override { return pass(value ? "true" : "false"); }
    bool number_integer(number_integer_t value) override { return pass(std::to_string(value)); }
    bool number_unsigned(number_unsigned_t value) override { return pass(std::to_string(value)); }
    // The text is kept, because 1.10 may be a version.
    bool number_float(number_float_t /*value*/, const string_t& text) override { return pass(text); }
    bool string(string_t& text) override { return pass(text); }
    bool binary(binary_t& /*value*/) override { return false; }

    bool start_object(std::size_t /*count*/) override { return collector_.open(false); }
    bool key(string_t& name) override {
        collector_.key(name);
        return true;
    }
    bool end_object() override { return close(); }
    bool start_array(std::size_t /*count*/) override { return collector_.open(true); }
    bool end_array() override { return close(); }

    bool parse_error(std::size_t position, const std::string& /*token*/,
                     const nlohmann::detail::exception& /*error*/) override {
        collector_.setProblem("damaged JSON at byte " + std::to_string(position));
        return false;
    }

  private:
    bool pass(std::optional<std::string_view> text) {
        collector_.scalar(text);
        return !collector_.isDone();
    }
    bool close() {
        collector_.close();
        return true;
    }

    RecordCollector collector_;
};

}  // namespace

Records readJsonRecords(std::string_view text, const RecordRequest& request,
                        const ProgressCheck& checkProgress) {
    Handler handler(request, checkProgress);
    Json::sax_parse(text.begin(), text.end(), &handler);
    return handler.takeRecords();
}

}  // namespace toolkit::quorvis
