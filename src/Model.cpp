#include "Model.h"

#include "Amplitude.h"
#include "Checkpoint.h"
#include "Constraint.h"
#include "ContactSearch.h"
#include "ContactSurface.h"
#include "ControlSet.h"
#include "DeckParser.h"
#include "Element.h"
#include "ElementLibrary.h"
#include "EnergyBalance.h"
#include "Load.h"
#include "Logger.h"
#include "LoggerLibrary.h"
#include "MassScaling.h"
#include "Material.h"
#include "Node.h"
#include "Reader.h"
#include "ReaderLibrary.h"
#include "RigidBody.h"
#include "Tracker.h"
#include "Writer.h"
#include "WriterLibrary.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <exception>
#include <iostream>
#include <stdexcept>

namespace {
std::string fixed(double v) {
    char buf[64];
    std::snprintf(buf, sizeof buf, "%f", v);
    return buf;
}

// The messages of a failure from the outermost to the innermost, which
// says what was wrong: "At line 10 --> Input STEP is not recognized".
std::string failureText(const std::exception& e) {
    std::string text = e.what();
    try {
        std::rethrow_if_nested(e);
    } catch (const std::exception& inner) {
        text += " --> " + failureText(inner);
    } catch (...) {
    }
    return text;
}

double secondsSince(const std::chrono::steady_clock::time_point& start) {
    const auto ns =
        std::chrono::duration_cast<std::chrono::nanoseconds>(std::chrono::steady_clock::now() - start);
    return static_cast<double>(ns.count()) / 1e9;
}
} // namespace

Model::Model(const int& id_, const std::string& deckPath) : inputPath(deckPath), id(id_) {}

Model::~Model() = default;

void Model::initialize() {
    try {
        logger = LoggerLibrary::getLogger(".md");
        if (restartRequested) logger->continueExisting();
        logger->init(inputPath);
        reader = ReaderLibrary::getReader(inputPath.extension().string());
        reader->init(inputPath);

        logger->writeSection("File info", 1);
        logger->writeList("File name: " + reader->filename(), 0);
        logger->writeList("Extension: " + reader->extension(), 0);
        logger->newLine();

        numberOfNodes = reader->numberOfNodes();
        numberOfElements = reader->numberOfElements();
        numberOfConstraints = reader->numberOfConstraints();
        numberOfMaterials = reader->numberOfMaterials();
        numberOfControls = reader->numberOfControls();
        numberOfTrackers = reader->numberOfTrackers();
        numberOfLoads = reader->numberOfLoads();
        numberOfAmplitudes = reader->numberOfAmplitudes();
        numberOfContactSurfaces = reader->numberOfContactSurfaces();

        reader->rewindFile();
        for (int i = 0; i < numberOfControls; ++i)
            reader->getControlSet(controlSet);
        reader->rewindFile();
        for (int i = 0; i < numberOfAmplitudes; ++i)
            amplitudes.push_back(reader->getNextAmplitude());
        reader->rewindFile();
        for (int i = 0; i < numberOfConstraints; ++i)
            constraints.push_back(reader->getNextConstraint(nodes, amplitudes));
        reader->rewindFile();
        for (int i = 0; i < numberOfLoads; ++i)
            loads.push_back(reader->getNextLoad(amplitudes));
        reader->rewindFile();
        for (int i = 0; i < numberOfMaterials; ++i)
            materials.push_back(reader->getNextMaterial());
        reader->rewindFile();
        for (int i = 0; i < numberOfContactSurfaces; ++i) {
            surfaces.push_back(reader->getNextContactSurface());
            for (std::size_t k = 0; k + 1 < surfaces.size(); ++k)
                if (surfaces[k]->getName() == surfaces.back()->getName())
                    throw std::invalid_argument("Contact surface " + surfaces.back()->getName() +
                                                " is defined twice: at line " +
                                                std::to_string(surfaces[k]->getLine()) + " and at line " +
                                                std::to_string(surfaces.back()->getLine()));
        }
        reader->rewindFile();
        nodes.reserve(numberOfNodes);
        // The nodes live side by side in one block, in deck order, so that the
        // loop streams them; the block never grows past its reserve, so their
        // addresses hold, and each shared pointer keeps the whole block.
        nodeBlock = std::make_shared<std::vector<Node>>();
        nodeBlock->reserve(numberOfNodes);
        std::unordered_map<int, int> nodeLines;
        for (int i = 0; i < numberOfNodes; ++i) {
            nodeBlock->push_back(*reader->getNextNode(constraints, loads));
            std::shared_ptr<Node> n(nodeBlock, &nodeBlock->back());
            const auto first = nodeLines.emplace(n->getNumber(), reader->getCurrentLine());
            if (!first.second)
                throw std::invalid_argument("Node " + std::to_string(n->getNumber()) +
                                            " is defined twice: at line " +
                                            std::to_string(first.first->second) + " and at line " +
                                            std::to_string(reader->getCurrentLine()));
            nodes.push_back(n);
            nodeMap.emplace(n->getNumber(), n);
        }
        reader->rewindFile();
        elements.reserve(numberOfElements);
        for (int i = 0; i < numberOfElements; ++i) {
            auto e = reader->getNextElement(nodes, nodeMap, materials, loads);
            const std::string surface = e->getSurfaceName();
            if (!surface.empty()) {
                std::shared_ptr<ContactSurface> found;
                for (const auto& s : surfaces)
                    if (s->getName() == surface) found = s;
                if (!found) {
                    try {
                        throw DeckParser::notFound("Contact surface", surface);
                    } catch (const std::exception&) {
                        std::throw_with_nested(
                            std::runtime_error("At line " + std::to_string(reader->getCurrentLine())));
                    }
                }
                found->addFacet(*e);
            }
            elements.push_back(e);
        }
        ElementLibrary::storeByKind(elements);
        for (const auto& e : elements)
            elementMap.emplace(e->getNumber(), e);
        // Rigid bodies claim nodes that elements may already use.
        const int numberOfRigidBodies = reader->numberOfRigidBodies();
        reader->rewindFile();
        for (int i = 0; i < numberOfRigidBodies; ++i)
            rigidBodies.push_back(reader->getNextRigidBody(nodeMap));
        writer = WriterLibrary::getWriterOstrel("VTK");
        writer->init(inputPath);
        reader->rewindFile();
        for (int i = 0; i < numberOfTrackers; ++i)
            trackers.push_back(reader->getNextTracker(nodeMap, elementMap));

        logger->writeSection("Model info", 1);
        logger->writeList("Number of objects instances ", 0);
        logger->writeList("Nodes: " + std::to_string(nodes.size()), 1);
        logger->writeList("Loads: " + std::to_string(loads.size()), 1);
        logger->writeList("Elements: " + std::to_string(elements.size()), 1);
        // The constraint count under "Controls" and the load count under
        // "Amplitudes" (intended; see the user guide, "Quirks worth knowing").
        logger->writeList("Controls: " + std::to_string(constraints.size()), 1);
        logger->writeList("Trackers: " + std::to_string(trackers.size()), 1);
        logger->writeList("Materials: " + std::to_string(materials.size()), 1);
        logger->writeList("Amplitudes: " + std::to_string(loads.size()), 1);
        logger->writeList("Constraints: " + std::to_string(constraints.size()), 1);
        logger->newLine();

        // Every later phase reads the time control: a deck without one cannot run.
        if (!controlSet)
            throw std::invalid_argument(
                "No control set: the deck needs a CONTROLS block with at least one line");
        controlSet->checkTrackInterval();
    } catch (const std::exception& e) {
        if (logger) logger->writeError(failureText(e), "initialize() method");
        std::throw_with_nested(std::runtime_error(" --> Initialize method "));
    }
}

void Model::print_what(const std::exception& e) {
    const char* message = e.what();
    if (message)
        std::cerr << message << '\n';
    else
        std::cerr.setstate(std::ios::badbit);
    try {
        std::rethrow_if_nested(e);
    } catch (const std::exception& nested) {
        std::cerr << " --> Details: ";
        print_what(nested);
    }
}

void Model::run() {
    try {
        initialize();
        assembleMassMatrix();
        setInitialConditions();
        if (restartRequested) resume();
        const auto start = std::chrono::steady_clock::now();
        solve();
        logger->entry(" Solving took : " + fixed(secondsSince(start)), true);
    } catch (const std::exception& e) {
        std::cerr << " --> Exception caught " << std::endl;
        print_what(e);
    }
}

void Model::assembleMassMatrix() {
    try {
        for (auto& e : elements)
            e->assembleMassMatrix();
    } catch (const std::exception& e) {
        logger->writeError(failureText(e), "assembleMatrix() method");
        std::throw_with_nested(std::runtime_error(" --> Assemble Mass Matrix method: Elements"));
    }
    try {
        for (auto& b : rigidBodies)
            b->assembleMassMatrix();
    } catch (const std::exception& e) {
        logger->writeError(failureText(e), "assembleMatrix() method");
        std::throw_with_nested(std::runtime_error(" --> Assemble Mass Matrix method: Rigid bodies"));
    }
    try {
        for (auto& n : nodes)
            n->determineMassMatrix();
    } catch (const std::exception& e) {
        logger->writeError(failureText(e), "assembleMatrix() method");
        std::throw_with_nested(std::runtime_error(" --> Assemble Mass Matrix method: Nodes"));
    }
}

void Model::setInitialConditions() {
    try {
        for (auto& a : amplitudes)
            a->setInitialConditions();
        for (auto& n : nodes)
            n->setInitialConditions();

        // The loop updates the nodes in the order of their initial x (which
        // also fixes the order in which the energies are summed).
        std::stable_sort(nodes.begin(), nodes.end(),
                         [](const std::shared_ptr<Node>& a, const std::shared_ptr<Node>& b) {
                             return a->getX_pos() < b->getX_pos();
                         });

        // Contact elements, also those that structural elements own, query
        // the model's one search.
        contactSearch = std::make_unique<ContactSearch>();
        for (auto& e : elements)
            e->attachContactSearch(*contactSearch);
        for (auto& s : surfaces)
            s->attachContactSearch(*contactSearch);
        for (auto& e : elements)
            e->setInitialConditions();
        if (contactSearch->isUsed()) contactSearch->update(nodes);
        for (auto& c : constraints)
            c->setInitialConditions();
        controlSet->setInitialConditions();
        // MASS SCALING adds mass where an element's stable step is below the
        // target, before the step is taken; its log section comes last.
        MassScaling massScaling(controlSet->getMassScalingTarget());
        for (auto& b : rigidBodies)
            b->noteMemberMasses();
        massScaling.apply(elements, nodes);
        // A body takes the mass scaling gave its members, then its state at rest.
        for (auto& b : rigidBodies) {
            b->takeAddedMass();
            b->setInitialConditions();
        }

        if (controlSet->getTimeStep() == 0.0) {
            automaticTimeStep = true;
            timeStep = 1e15;
            logger->writeList("Automatic step time: true ", 0);
            for (auto& e : elements)
                timeStep = e->checkTimestep(timeStep);
            // Only structural elements bound the step; without one the start
            // value would stand as the step and end the run in one increment.
            if (!(timeStep < 1e15))
                throw std::invalid_argument("No element sets the automatic time step: give STEP a value "
                                            "greater than 0 in the CONTROLS block");
        } else {
            automaticTimeStep = false;
            timeStep = controlSet->getTimeStep();
            logger->writeList("Automatic step time: false", 0);
            logger->writeList("Step time: " + fixed(timeStep), 1);
        }

        checkNodeNumbering();
        setUpContactSurfaces();
        // Trackers and contact surfaces have found their elements by number:
        // the run needs the map no more.
        std::unordered_map<int, std::shared_ptr<Element>>().swap(elementMap);
        parallel.setUp(elements, nodes, contactSearch->isUsed());
        nodeRunSums.assign(parallel.nodeRuns().number, EnergyBalance::Partial{});
        firstDiverged.assign(parallel.nodeRuns().number, 0);
        writer->initializeWriter(nodes, elements);
        // Each print reports the model time it is written at (the series file).
        writer->setClock(currentTime);
        for (auto& t : trackers) {
            t->initializeTracker();
            if (!t->isWritable())
                logger->writeList("Warning: tracker file " + t->csvPath() +
                                      " cannot be written; the history of tracker " + t->getName() +
                                      " is lost",
                                  0);
        }

        energy.setUp(nodes, loads, contactSearch->isUsed() || !surfaces.empty());
        if (!monitor.start(inputPath, *logger, timeStep, controlSet->getEndTime(), automaticTimeStep))
            logger->writeList("Warning: energy history " + monitor.energyFile() + " cannot be written", 0);

        logger->writeList("Ouput type: " + writer->getType(), 0);
        logger->writeList("Print step: " + fixed(controlSet->getPrintStep()), 0);
        logger->writeList("Threads: " + std::to_string(ParallelLoop::threads()), 0);
        logger->newLine();
        massScaling.writeLog(*logger);
    } catch (const std::exception& e) {
        logger->writeError(failureText(e), "setInitialConditions() method");
        std::throw_with_nested(std::runtime_error(" --> Initial conditions method"));
    }
}

void Model::setUpContactSurfaces() {
    if (surfaces.empty()) return;
    std::vector<char> onRigidBody(nodes.size(), 0);
    // Indexed by node number - 1 (the numbering is checked before).
    for (const auto& n : nodes)
        if (n->getRigidBody()) onRigidBody[static_cast<std::size_t>(n->getNumber() - 1)] = 1;
    logger->writeList("Contact surfaces: " + std::to_string(surfaces.size()), 0);
    for (auto& s : surfaces) {
        try {
            s->setInitialConditions(nodes, nodeMap, elementMap, onRigidBody);
        } catch (const std::exception&) {
            std::throw_with_nested(std::runtime_error("At line " + std::to_string(s->getLine())));
        }
        logger->writeList(s->getName() + ": " + std::to_string(s->getNumberOfFacets()) + " facets, " +
                              (s->getKind() == ContactSurface::Kind::Solid ? "SOLID" : "SHELL") +
                              ", acts on " + std::to_string(s->getNumberOfActingNodes()) + " nodes",
                          1);
    }
}

void Model::checkNodeNumbering() {
    // The results file addresses points by node number: point k is node k.
    const long count = static_cast<long>(nodes.size());
    for (const auto& n : nodes) {
        const long k = n->getNumber();
        if (k < 1 || k > count)
            throw std::invalid_argument("Node numbers must run from 1 to the number of nodes (" +
                                        std::to_string(count) + ") without gaps: node " + std::to_string(k) +
                                        " is out of that range");
    }
}

void Model::step(double& candidateStep, bool clearForces) {
    const double dt = timeStep;
    // A step that is negative, zero, NaN, infinite or too small to change the
    // time would never reach the end time: refuse it before it moves anything.
    if (!std::isfinite(dt))
        throw std::runtime_error("Time step " + DeckParser::number(dt) +
                                 " is not a finite number: the run cannot reach its end time");
    if (!(currentTime + dt > currentTime))
        throw std::runtime_error("Time step " + DeckParser::number(dt) + " does not advance the time from " +
                                 fixed(currentTime) + ": the run cannot reach its end time");
    energy.beginIncrement(dt, currentTime);
    // The nodes evaluate their constraints' amplitudes at this time on every
    // thread; asked once here first, a tabular amplitude's cursor is already
    // on the right segment.
    for (auto& a : amplitudes)
        a->at(currentTime);
    parallel.elementPass(elements, dt, currentTime, automaticTimeStep, candidateStep);
    // Named contact surfaces push each node once, after the elements' own contact.
    for (auto& s : surfaces)
        s->computeContactForces(dt, parallel);
    // A body's members hand their forces to its reference node, which moves
    // them after its own update.
    for (auto& b : rigidBodies)
        b->gatherForces();
    // Nodes lie in memory in deck order but are updated in x order, in runs
    // of consecutive nodes; loading a few nodes ahead hides most of the wait
    // for each one.
    const std::size_t count = nodes.size();
    const double time = currentTime;
    const ParallelLoop::Pieces& runs = parallel.nodeRuns();
    parallel.forEach(runs.number, runs.parallel(), [&](std::size_t r) {
        // Summed here and stored once: the runs' sums lie side by side, and
        // threads writing neighbours would share their cache lines.
        EnergyBalance::Partial sums;
        firstDiverged[r] = count;
        const std::size_t first = runs.begin(r), end = runs.end(r);
        constexpr std::size_t ahead = 4;
        for (std::size_t i = first; i < end && i < first + ahead; ++i)
            nodes[i]->prefetchForUpdate();
        for (std::size_t i = first; i < end; ++i) {
            if (i + ahead < end) nodes[i + ahead]->prefetchForUpdate();
            Node& n = *nodes[i];
            if (n.isRigidMember()) {
                if (clearForces) n.clearNodalForces();
                continue;
            }
            EnergyBalance::Around around;
            energy.beforeUpdate(n, around);
            n.computeNewPosition(dt, time);
            sums.nodeInternal += n.getInternalEnergy();
            sums.nodeKinetic += n.getKineticEnergy();
            // An unstable integration shows first as a non-finite position or
            // rotation; the run stops there rather than write pages of NaN.
            if (!std::isfinite(n.getX_pos() + n.getY_pos() + n.getZ_pos() + n.getX_rot() + n.getY_rot() +
                               n.getZ_rot())) {
                firstDiverged[r] = i;
                nodeRunSums[r] = sums;
                return;
            }
            energy.afterUpdate(n, i, around, sums);
            if (clearForces) n.clearNodalForces();
        }
        nodeRunSums[r] = sums;
    });
    internalEnergy = 0.0;
    kineticEnergy = 0.0;
    for (std::size_t r = 0; r < nodeRunSums.size(); ++r) {
        if (firstDiverged[r] < count) {
            const Node& n = *nodes[firstDiverged[r]];
            throw std::runtime_error(
                "Node " + std::to_string(n.getNumber()) + " has a non-finite position at time " +
                fixed(currentTime) + " with time step " + DeckParser::number(dt) +
                ": the integration diverged (check the time step against the critical one, the loads and "
                "the material parameters)");
        }
        internalEnergy += nodeRunSums[r].nodeInternal;
        kineticEnergy += nodeRunSums[r].nodeKinetic;
    }
    energy.endIncrement(nodeRunSums.data(), nodeRunSums.size());
    for (auto& b : rigidBodies)
        b->placeMembers();
    // Only contact elements read the search: a model without them does not
    // rebin its nodes.
    if (contactSearch && contactSearch->isUsed()) contactSearch->update(nodes, &parallel);
    if (automaticTimeStep) timeStep = candidateStep;
}

void Model::solve() {
    const auto start = std::chrono::steady_clock::now();
    logger->writeSection("Running info", 1);
    logger->writeComment("Call divider");
    int printCount = 0;
    double candidateStep = 90000.0;
    currentTime = 0.0;
    beginCheckpoints(printCount, candidateStep);
    double t = currentTime;
    try {
        while (!(controlSet->getEndTime() < t) && controlSet->getEndTime() == controlSet->getEndTime()) {
            // The print decision depends on the time alone, which the step
            // does not change; taken first, it lets a step that writes
            // nothing clear the nodal forces during the node update.
            const bool print = controlSet->timeToPrint(currentTime);
            // Trackers write with the prints unless TRACK EVERY gives them a
            // schedule of their own; they read the forces of the step too.
            const bool ownTrack = controlSet->hasTrackInterval();
            const bool track = ownTrack ? controlSet->timeToTrack(currentTime) : print;
            const bool keepForces = print || track;
            step(candidateStep, !keepForces);
            if (print) {
                logger->writeList("Writing output file " + std::to_string(printCount), 0);
                logger->writeList("Elapsed time: " + fixed(secondsSince(start)), 1);
                logger->writeList("Current time: " + fixed(currentTime), 1);
                logger->writeList("Time step: " + fixed(timeStep), 1);
                logger->writeList("Internal energy: " + fixed(internalEnergy), 1);
                logger->writeList("Kinetic energy: " + fixed(kineticEnergy), 1);
                monitor.writePrint(energy, currentTime, timeStep);
                logger->writeComment("Call divider");
                ++printCount;
                try {
                    writer->writeResults(nodes, elements);
                    if (!ownTrack)
                        for (auto& tracker : trackers)
                            tracker->printCSV(currentTime);
                } catch (const std::exception&) {
                    std::throw_with_nested(std::runtime_error(" --> Error during writing"));
                }
            }
            if (ownTrack && track) {
                try {
                    for (auto& tracker : trackers)
                        tracker->printCSV(currentTime);
                } catch (const std::exception&) {
                    std::throw_with_nested(std::runtime_error(" --> Error during writing"));
                }
            }
            monitor.afterIncrement(energy, currentTime, timeStep, print, nodes, elements);
            advanceTime(!keepForces);
            t = currentTime;
            if (checkpointAfterIncrement(printCount, candidateStep)) break;
        }
    } catch (const std::exception& e) {
        logger->writeError(failureText(e), "solve() method");
        std::throw_with_nested(std::runtime_error(" --> Run method"));
    }
}

void Model::advanceTime(bool forcesCleared) {
    if (!forcesCleared)
        for (auto& node : nodes)
            node->clearNodalForces();
    // A step that cannot move the time on is refused by the next increment.
    currentTime += timeStep;
}

double Model::getEndTime() const {
    return controlSet ? controlSet->getEndTime() : 0.0;
}
