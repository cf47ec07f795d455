// Owns every component of one analysis, assembles it from the deck and runs
// the explicit central-difference loop.
#pragma once

#include "EnergyBalance.h"
#include "ParallelLoop.h"
#include "RunMonitor.h"

#include <filesystem>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class Reader;
class ControlSet;
class Node;
class Element;
class Material;
class Constraint;
class Load;
class Tracker;
class Amplitude;
class Writer;
class Logger;
class ContactSearch;
class ContactSurface;
class RigidBody;
class Archive;
struct CheckpointRun;

class Model {
public:
    Model(const int& id, const std::string& deckPath);
    ~Model();

    void run();
    // Resume the run from its latest good checkpoint (drapex DECK --restart)
    // instead of starting at time 0.
    void setRestart(bool on) { restartRequested = on; }
    // Reads the latest good checkpoint into the model set up from the deck
    // (run calls it after the set-up when a restart is asked for).
    void resume();
    // Writes a checkpoint of the run as it stands between two increments
    // (ModelCheckpoint.cpp), with the loop's print count and candidate step;
    // returns the file written. Throws when it cannot be written.
    std::filesystem::path writeCheckpoint(int printCount, double candidateStep);
    void initialize();
    void assembleMassMatrix();
    void setInitialConditions();
    void solve();
    // Contact search of the model (nothing is binned without contact elements).
    ContactSearch* getContactSearch() const { return contactSearch.get(); }
    void print_what(const std::exception& e);

    int getNumberOfAmplitudes() const { return numberOfAmplitudes; }

    // Access for tests and tools.
    const std::vector<std::shared_ptr<Node>>& getNodes() const { return nodes; }
    const std::vector<std::shared_ptr<Element>>& getElements() const { return elements; }
    const std::unordered_map<int, std::shared_ptr<Node>>& getNodeMap() const { return nodeMap; }
    const std::vector<std::shared_ptr<ContactSurface>>& getContactSurfaces() const { return surfaces; }
    const std::vector<std::shared_ptr<RigidBody>>& getRigidBodies() const { return rigidBodies; }
    double getTimeStep() const { return timeStep; }
    const ParallelLoop& getParallelLoop() const { return parallel; }
    double getCurrentTime() const { return currentTime; }
    double getInternalEnergy() const { return internalEnergy; }
    double getKineticEnergy() const { return kineticEnergy; }
    // Energy balance of the run so far (see EnergyBalance.h) and the monitor
    // that reports it.
    const EnergyBalance& getEnergyBalance() const { return energy; }
    RunMonitor& getMonitor() { return monitor; }
    bool isAutomaticTimeStep() const { return automaticTimeStep; }
    // Advances one increment of the loop (used by solve and by tests); refuses
    // a time step that is not finite or does not move the time on. With
    // clearForces each node's forces are cleared right after its update,
    // while it is still in cache; only a step whose results are written
    // needs them afterwards.
    void step(double& candidateStep, bool clearForces = false);
    // Closes an increment: clears the nodal forces (unless the step did) and
    // moves the time on by the current step.
    void advanceTime(bool forcesCleared = false);
    // End time of the control set (0 while there is none).
    double getEndTime() const;

private:
    void checkNodeNumbering();
    // Decides which nodes each contact surface acts on and reports it in the log.
    void setUpContactSurfaces();
    // The loop's checkpoint hooks (ModelCheckpoint.cpp): before the first
    // increment (the signals, the schedule, a resumed run's counters), and
    // after each increment, which writes the checkpoints that are due and
    // answers true when a signal asks the run to stop.
    void beginCheckpoints(int& printCount, double& candidateStep);
    bool checkpointAfterIncrement(int printCount, double candidateStep);
    // Writes or reads every piece of state, in one order.
    void checkpointState(Archive& archive, int& printCount, double& candidateStep);

    std::filesystem::path inputPath;
    int id;
    std::shared_ptr<Reader> reader;
    int numberOfConstraints = 0, numberOfElements = 0, numberOfNodes = 0, numberOfMaterials = 0,
        numberOfControls = 0, numberOfTrackers = 0, numberOfLoads = 0, numberOfAmplitudes = 0,
        numberOfContactSurfaces = 0;
    std::unique_ptr<ControlSet> controlSet;
    // Declared before the elements, so that it outlives the contact elements that use it.
    std::unique_ptr<ContactSearch> contactSearch;
    // The nodes' storage, and the nodes as the rest of the model sees them.
    std::shared_ptr<std::vector<Node>> nodeBlock;
    std::vector<std::shared_ptr<Node>> nodes;
    std::vector<std::shared_ptr<Element>> elements;
    std::vector<std::shared_ptr<ContactSurface>> surfaces;
    std::vector<std::shared_ptr<Material>> materials;
    std::vector<std::shared_ptr<Constraint>> constraints;
    std::vector<std::shared_ptr<Load>> loads;
    std::vector<std::shared_ptr<Tracker>> trackers;
    std::vector<std::shared_ptr<Amplitude>> amplitudes;
    std::vector<std::shared_ptr<RigidBody>> rigidBodies;
    std::unordered_map<int, std::shared_ptr<Node>> nodeMap;
    std::unordered_map<int, std::shared_ptr<Element>> elementMap;
    std::unordered_map<int, std::shared_ptr<Material>> materialMap;
    std::shared_ptr<Writer> writer;
    std::shared_ptr<Logger> logger;
    double timeStep = 0.0;
    double currentTime = 0.0;
    bool automaticTimeStep = false;
    double internalEnergy = 0.0, kineticEnergy = 0.0;
    EnergyBalance energy;
    RunMonitor monitor;
    // Work sharing of the loop among the threads, and each run of nodes' sums.
    ParallelLoop parallel;
    std::vector<EnergyBalance::Partial> nodeRunSums;
    std::vector<std::size_t> firstDiverged;
    bool restartRequested = false;
    std::unique_ptr<CheckpointRun> checkpoints;
};
