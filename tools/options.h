// Options of the program's commands: a thin layer over the parser, whose headers are big enough that only options.cpp
// includes them.
#pragma once

#include <functional>
#include <initializer_list>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace CLI {
class App;
class Option;
} // namespace CLI

namespace tools {

// The user's mistake on the command line, found after parsing: "--size: it must be odd". The program ends with 2.
class UsageError : public std::runtime_error {
public:
    UsageError(const std::string &option, const std::string &what) : std::runtime_error(option + ": " + what) {}
};

// What an option's value has to be. NaN is in no range.
class Option {
public:
    explicit Option(CLI::Option *option) : option_(option) {}
    Option &required();
    Option &showDefault(); // in the help
    Option &range(int low, int high);
    Option &range(double low, double high);
    Option &positive();
    Option &notNegative();
    Option &oneOf(const std::vector<std::string> &values);
    Option &oneOf(std::initializer_list<int> values);
    Option &pair(); // two numbers with a comma between them
    Option &needs(const std::string &other);
    Option &excludes(const std::string &other);
    bool given() const; // while the command runs

private:
    CLI::Option *option_;
};

// A name without dashes is a positional argument; "-o,--output" has a short and a long name.
class Command {
public:
    explicit Command(CLI::App *command) : command_(command) {}
    // The types that are there stand at the end of options.cpp.
    template <class T> Option option(const std::string &name, T &value, const std::string &help);
    Option flag(const std::string &name, bool &value, const std::string &help); // "!--no-x" clears it
    void action(std::function<void()> run);

private:
    CLI::App *command_;
};

class Program {
public:
    Program(const std::string &name, const std::string &description);
    ~Program();
    Command command(const std::string &name, const std::string &help);
    // Exit codes: 0 done, 1 a file or its content, 2 the command line.
    int run(int argc, char **argv);

private:
    std::unique_ptr<CLI::App> program_;
};

} // namespace tools
