#include <exception>

#include "ScenarioFile.h"
#include "chip.h"

namespace {

// A terminal whose scenario cannot be used is of no model; CChip::Initialise reports why.
Model readModel() {
    try {
        return loadScenario().model;
    } catch (const std::exception&) {
        return Model::None;
    }
}

// A terminal does not change its model: read once, by the first question.
Model model() {
    static const Model answer = readModel();
    return answer;
}

}  // namespace

CPOSSystem CPOSSystem::s_instance;

bool CPOSSystem::IsGrebel() {
    return model() == Model::Grebel;
}

bool CPOSSystem::IsZan() {
    return model() == Model::Zan;
}
