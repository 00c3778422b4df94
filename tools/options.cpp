#include "options.h"

#include <CLI/CLI.hpp>
#include <cmath>
#include <cstdio>

namespace tools {
namespace {

// The parser's own range lets NaN pass.
template <class T> CLI::Validator within(T low, T high) {
    const CLI::Range range(low, high);
    CLI::Validator validator(range.get_description());
    validator.operation([range](std::string &text) {
        T value;
        const bool number = CLI::detail::lexical_cast(text, value) && !std::isnan(static_cast<double>(value));
        return number ? range(text) : "Value " + text + " is not a number";
    });
    return validator;
}

} // namespace

Option &Option::required() {
    option_->required();
    return *this;
}

Option &Option::showDefault() {
    option_->capture_default_str();
    return *this;
}

Option &Option::range(int low, int high) {
    option_->check(within(low, high));
    return *this;
}

Option &Option::range(double low, double high) {
    option_->check(within(low, high));
    return *this;
}

Option &Option::positive() {
    option_->check(CLI::PositiveNumber);
    return *this;
}

Option &Option::notNegative() {
    option_->check(CLI::NonNegativeNumber);
    return *this;
}

Option &Option::oneOf(const std::vector<std::string> &values) {
    option_->check(CLI::IsMember(values));
    return *this;
}

Option &Option::oneOf(std::initializer_list<int> values) {
    option_->check(CLI::IsMember(std::vector<int>(values)));
    return *this;
}

Option &Option::pair() {
    option_->delimiter(',')->expected(2);
    return *this;
}

Option &Option::needs(const std::string &other) {
    option_->needs(other);
    return *this;
}

Option &Option::excludes(const std::string &other) {
    option_->excludes(other);
    return *this;
}

bool Option::given() const { return option_->count() != 0; }

template <class T> Option Command::option(const std::string &name, T &value, const std::string &help) {
    return Option(command_->add_option(name, value, help));
}

Option Command::flag(const std::string &name, bool &value, const std::string &help) {
    return Option(command_->add_flag(name, value, help));
}

void Command::action(std::function<void()> run) { command_->callback(std::move(run)); }

Program::Program(const std::string &name, const std::string &description)
    : program_(std::make_unique<CLI::App>(description, name)) {
    program_->require_subcommand(1);
}

Program::~Program() = default;

Command Program::command(const std::string &name, const std::string &help) {
    return Command(program_->add_subcommand(name, help));
}

int Program::run(int argc, char **argv) {
    try {
        program_->parse(argc, argv);
    } catch (const CLI::ParseError &error) {
        return program_->exit(error) == 0 ? 0 : 2;
    } catch (const UsageError &error) {
        std::fprintf(stderr, "%s\nRun with --help for more information.\n", error.what());
        return 2;
    } catch (const std::exception &error) {
        std::fprintf(stderr, "rvxcv: %s\n", error.what());
        return 1;
    }
    return 0;
}

template Option Command::option(const std::string &, std::string &, const std::string &);
template Option Command::option(const std::string &, int &, const std::string &);
template Option Command::option(const std::string &, unsigned &, const std::string &);
template Option Command::option(const std::string &, std::int64_t &, const std::string &);
template Option Command::option(const std::string &, std::size_t &, const std::string &);
template Option Command::option(const std::string &, float &, const std::string &);
template Option Command::option(const std::string &, double &, const std::string &);
template Option Command::option(const std::string &, std::optional<int> &, const std::string &);
template Option Command::option(const std::string &, std::optional<float> &, const std::string &);
template Option Command::option(const std::string &, std::optional<double> &, const std::string &);
template Option Command::option(const std::string &, std::vector<float> &, const std::string &);
template Option Command::option(const std::string &, std::vector<std::string> &, const std::string &);

} // namespace tools
