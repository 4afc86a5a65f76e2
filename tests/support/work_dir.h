#pragma once
/// An empty working directory and fresh process-wide state for each test, and the files in it.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

/// Listener that changes into a new directory before each test and removes it afterwards. The
/// listing `fOutputFile` is open on "TaveloOutput.lst" in it.
class FreshWorkDir : public testing::EmptyTestEventListener {
 public:
  void OnTestStart(testing::TestInfo const& info) override;
  void OnTestEnd(testing::TestInfo const& info) override;

 private:
  std::filesystem::path home;
  std::filesystem::path dir;
};

void write_file(std::string const& name, std::string const& text);
std::string read_file(std::string const& name);
std::vector<std::string> read_lines(std::string const& name);
/// What has been written to the listing so far.
std::string listing_text();

/// Writes a parameter file of one section from "key = value" lines.
void write_parameters(std::string const& name, std::string const& section,
                      std::vector<std::string> const& settings);

/// Writes a parameter file from settings as "section: key=value key=value; section: key=value".
void write_settings(std::string const& name, std::string const& settings);
