// A model assembled from a deck text and brought to the start of the solution
// (initialize, mass assembly, initial conditions) with the console echo of the
// job log silenced, so that tests can drive single increments.
#pragma once

#include "Model.h"
#include "TestUtil.h"

#include <iostream>
#include <memory>
#include <sstream>
#include <string>

namespace contact_test {

class QuietModel {
public:
    QuietModel(const std::string& name, const std::string& deckText) : saved(std::cout.rdbuf(sink.rdbuf())) {
        const auto dir = testutil::scratchDir(name);
        deck = testutil::writeFile(dir / (name + ".txt"), deckText);
        model = std::make_unique<Model>(1, deck.string());
        model->initialize();
        model->assembleMassMatrix();
        model->setInitialConditions();
    }
    ~QuietModel() {
        model.reset();
        std::cout.rdbuf(saved);
    }
    QuietModel(const QuietModel&) = delete;
    QuietModel& operator=(const QuietModel&) = delete;

    Model& operator*() { return *model; }
    Model* operator->() { return model.get(); }

    std::filesystem::path deck;

private:
    std::ostringstream sink;
    std::streambuf* saved;
    std::unique_ptr<Model> model;
};

} // namespace contact_test
