/*
 * QuellonEngine: static analysis of pile groups under a rigid cap in layered ground.
 *
 * This header is the whole contract between the engine and a host application. The
 * engine holds exactly one model; the host fills it through the setters below (or has
 * it read from a text model file), registers the functions it wants to be called, and
 * starts a run on its own thread. The run belongs to the calling thread: it returns when
 * the run is over, and every callback, the message function and the window message
 * observer are called on that thread, in the middle of the run, the engine waiting for
 * each.
 *
 * Threads. The heavy steps of a run (the soil matrices, the factorisation of the system,
 * the softening of a large non-linear model) share their work among the threads of the
 * OpenMP pool of the process, whose size OMP_NUM_THREADS (or omp_set_num_threads in the
 * host) sets; small models stay on the calling thread. The pool's threads stay with the
 * process between runs, as OpenMP keeps them. The engine's own routines give the same
 * results bit for bit whatever the number of threads; the LAPACK route (the solver
 * flag) may also use the threads of the LAPACK library in use, under that library's
 * own settings. No host function is ever called from a pool thread. The engine holds
 * one model: two threads of a host must not call it at the same time.
 *
 * Conventions of every export:
 *   - results are 1 for success and 0 for failure unless told otherwise;
 *   - reals arrive as doubles and are stored as 32-bit floats;
 *   - indices of piles and layers count from 1;
 *   - a text is a pointer to NUL-terminated characters and a count of characters to
 *     take (a negative count takes none; the count must not exceed the text's length);
 *   - a "bool" argument is one byte, stored as a 32-bit integer without a check;
 *   - every setter echoes its call to the LOG file when one is open.
 *
 * Calls from inside a run. A host's function called during a run (a callback, the
 * message function, the window message observer) may call back into the engine:
 *   - refused with 0 and an error message, the model left as the run uses it: every
 *     model setter, READTMWFILEDIRECT and the three run entries;
 *   - allowed, at once: the getters, QuellonGetVersion, QuellonTest, registering or
 *     clearing any callback (QuellonCloseAllCallbacks included; a function cleared
 *     meanwhile is not called), creating or closing the LOG, writing the model in hand
 *     to a TMK file and closing it, closing the TMW file;
 *   - deferred: QuellonCloseTXTFile and QuellonCloseAllFiles are carried out when the
 *     run ends, after the last line of its XML and TXT documents, with their usual
 *     messages; an info message says so at the time of the call.
 * A message that arises while the message function itself is running (from a call it
 * makes into the engine) goes to the LOG only, never to the message function again.
 *
 * Paths. The entries that take a NUL-terminated path (QuellonRunAnalysis1 and 2,
 * QuellonCreateLOGFile, QuellonCreateTMKFile) take at most 260 characters, trailing
 * blanks not counted. A longer path is refused with result 0 before anything is opened,
 * closed or reset (an open LOG, TMK, XML or TXT file stays as it was, and so does the
 * model), and the error message "Path too long (N characters, at most 260): " with the
 * path goes to the message function and, like every message, to the LOG if one is open.
 * A TXT path too long refuses the whole run. The DIRECT entries take a 260-character
 * blank-padded field, which holds what it holds: a path that fills all 260 characters
 * is taken as it stands.
 *
 * Units: m, kN, kNm, kPa, kN/m^3, degrees. Section stiffnesses are passed in MN and
 * MNm^2 and held in kN and kNm^2. X and Y are horizontal, Z is positive downward.
 *
 * Calling order: create the LOG (optional), register callbacks, create the layer and
 * pile tables, set the rest, run. A run consumes the model: afterwards every record
 * holds its reset value and the next analysis needs the model set again. Callbacks,
 * open files and the LOG survive a run.
 */
#ifndef QUELLON_H
#define QUELLON_H

#if defined(_WIN32)
#  if defined(QUELLON_BUILDING_LIBRARY)
#    define QUELLON_API __declspec(dllexport)
#  else
#    define QUELLON_API __declspec(dllimport)
#  endif
#else
#  define QUELLON_API __attribute__((visibility("default")))
#endif

#ifdef __cplusplus
extern "C" {
#endif

/* One byte in the argument slot; any non-zero value is stored as it stands. */
typedef signed char quellon_bool;

/* ---------------------------------------------------------------------------------
 * Host callbacks. Every numeric argument is passed by reference and is valid only
 * during the call. Reals are 32-bit floats.
 * ------------------------------------------------------------------------------- */
typedef void (*QuellonCounterFn)(const int* increment);
/* severity: 0 info, 1 warning, 2 error, 3 critical. text: trimmed, NUL-terminated. */
typedef void (*QuellonMessageFn)(const int* severity, const char* text);
typedef void (*QuellonCreateIncrementFn)(const int* increment);
/* Cumulative cap loads Fx, Fy, Fz (kN), Mx, My, Mz (kNm). */
typedef void (*QuellonPileCapLoadsFn)(const float* fx, const float* fy, const float* fz,
                                      const float* mx, const float* my, const float* mz);
/* Cumulative cap movement: displacements X, Y, Z (m), rotations about X, Y, Z (rad). */
typedef void (*QuellonPileCapDisplacementsFn)(const float* dx, const float* dy, const float* dz,
                                              const float* rx, const float* ry, const float* rz);
/* GRMAT(1,1), (1,2), (1,3), (2,1), (2,2), (2,3), (3,1), (3,2), (3,3), kN/m. */
typedef void (*QuellonForceDisplacementStiffnessesFn)(
    const float* k11, const float* k12, const float* k13,
    const float* k21, const float* k22, const float* k23,
    const float* k31, const float* k32, const float* k33);
/* The 6 by 6 group stiffness in column order: element (a, b) at a + 6(b - 1), from 1;
 * axes X, Y, Z, about X, about Y, about Z; kN, kNm, m, rad. */
typedef void (*QuellonStiffnessMatrixFn)(const float* grmat);
/* Centre of rotation of the group, X and Y in m. */
typedef void (*QuellonCentreOfRotationFn)(const float* x, const float* y);

/* ---------------------------------------------------------------------------------
 * Project
 * ------------------------------------------------------------------------------- */
QUELLON_API int QuellonSetProjectName(const char* text, int count);
QUELLON_API int QuellonSetProjectDescription(const char* text, int count);
QUELLON_API int QuellonSetProjectDate(int year, int month, int day);
/* Takes the first count entries (at most 40) as flags 1.., non-zero meaning set; the
 * flags beyond the count keep their values. Flag 16 selects the LAPACK solver. */
QUELLON_API int QuellonSetProjectFlags(const int* flags, int count);
QUELLON_API int QuellonSetProjectFilename(const char* text, int count);
QUELLON_API int QuellonSetProjectElasticUnloadingFlag(quellon_bool on);
/* Hyperbolic constants of shaft, base, lateral and torsion, each below 1. */
QUELLON_API int QuellonSetProjectHyperbolicFactors(double rs, double rb, double rl, double rt);
/* automatic != 0: Nq follows from the angle of shearing resistance; else nq is used. */
QUELLON_API int QuellonSetProjectNq(quellon_bool automatic, double nq);
QUELLON_API int QuellonSetProjectLimitingShaftFriction(double kpa);
QUELLON_API int QuellonSetProjectLimitingBearingPressure(double kpa);
QUELLON_API int QuellonSetProjectExcludeTMKComments(quellon_bool exclude);
/* Two or more increments make the analysis non-linear. */
QUELLON_API int QuellonSetNumberOfLoadIncrements(int n);
/* Loads on the cap (kN, kNm) and the point (x, y) at which they act (m). */
QUELLON_API int QuellonSetActions(double fx, double fy, double fz, double mx, double my,
                                  double mz, double x, double y);

/* ---------------------------------------------------------------------------------
 * Borehole and ground. The layer table is created by QuellonSetBoreholeNumberOfLayers,
 * which must come before any per-layer setter and may be called once per model.
 * ------------------------------------------------------------------------------- */
QUELLON_API int QuellonSetBoreholeDepthToRigidLayer(double depth);
QUELLON_API int QuellonSetBoreholeOverburden(double kpa);
QUELLON_API int QuellonSetBoreholeNumberOfLayers(int n);
/* Result: the number of layers. */
QUELLON_API int QuellonGetBoreholeNumberOfLayers(void);
/* 1 Poulos, 2 Yamashita. */
QUELLON_API int QuellonSetBoreholeLayerAveraging(int averaging);
/* Result: the averaging flag. */
QUELLON_API int QuellonGetBoreholeLayerAveraging(void);
QUELLON_API int QuellonSetBoreholeLayerDepth(int layer, double depth_to_top);
QUELLON_API int QuellonSetBoreholeLayerName(int layer, const char* text, int count);
QUELLON_API int QuellonSetBoreholeLayerStiffness(int layer, double ev, double dev, double eh,
                                                 double deh, double poisson);
QUELLON_API int QuellonSetGroundName(int layer, const char* text, int count);
/* 1 coarse soil, 2 fine soil, 3 rock, 4 direct values. */
QUELLON_API int QuellonSetGroundType(int layer, int type);
QUELLON_API int QuellonSetGroundMaximumSkinFriction(int layer, double kpa);
QUELLON_API int QuellonSetGroundMaximumBearingPressure(int layer, double kpa);
QUELLON_API int QuellonSetGroundWeightDensity(int layer, double kn_per_m3);
QUELLON_API int QuellonSetSoilAngleOfFriction(int layer, double phi_degrees);
QUELLON_API int QuellonSetSoilEarthPressureCoefficient(int layer, double ks);
QUELLON_API int QuellonSetSoilDrainedInterfaceParameter(int layer, double delta_degrees);
QUELLON_API int QuellonSetSoilUndrainedShearStrength(int layer, double cu, double dcu);
QUELLON_API int QuellonSetSoilUndrainedInterfaceParameter(int layer, double alpha);
QUELLON_API int QuellonSetRockStrength(int layer, double qu_kpa);
QUELLON_API int QuellonSetRockInterfaceParameters(int layer, double k1, double k2, double k3,
                                                  double k4, double k5);

/* ---------------------------------------------------------------------------------
 * Foundation and piles. The pile table is created by QuellonSetNumberOfPiles, which
 * must come before any per-pile setter and may be called once per model.
 * ------------------------------------------------------------------------------- */
QUELLON_API int QuellonSetNumberOfPiles(int n);
/* Shaft elements per pile, the same for every pile. */
QUELLON_API int QuellonSetNumberOfPileElements(int n);
/* 1 infinite, 2 automatic (50 shaft diameters), 3 custom distance. */
QUELLON_API int QuellonSetPileInteractionFlag(signed char flag);
/* Also sets the interaction flag to 3. */
QUELLON_API int QuellonSetPileInteractionDistance(double distance);
QUELLON_API int QuellonSetPileCoordinates(int pile, double x, double y, double z);
QUELLON_API int QuellonSetPileDimensions(int pile, double length, double shaft_diameter,
                                         double internal_diameter, double base_diameter);
QUELLON_API int QuellonSetPileHeadLoads(int pile, double fx, double fy, double fz, double mx,
                                        double my, double mz);
QUELLON_API int QuellonSetPileName(int pile, const char* text, int count);
/* Degrees; a positive rake carries the lower end towards negative X or Y. */
QUELLON_API int QuellonSetPileRake(int pile, double rake_x, double rake_y);
/* Reinforced length (m from the soil entry point) and its section in MN, MNm^2. */
QUELLON_API int QuellonSetPileReinforcedSectionProperties(int pile, double length, double ea,
                                                          double eix, double eiy, double gj);
/* Section below the reinforced length, in MN, MNm^2. */
QUELLON_API int QuellonSetPileUnreinforcedSectionProperties(int pile, double ea, double eix,
                                                            double eiy, double gj);
QUELLON_API int QuellonSetPileCapStiffness(int stiffness);
QUELLON_API int QuellonSetPileFreeStandingLength(double length);

/* ---------------------------------------------------------------------------------
 * Others
 * ------------------------------------------------------------------------------- */
/* 803: version 3.23 read as pairs of hexadecimal digits. */
QUELLON_API int QuellonGetVersion(void);
/* Writes "Ran the test!" to the LOG if it is open. */
QUELLON_API void QuellonTest(void);

/* ---------------------------------------------------------------------------------
 * Callbacks. Each registration stores the pointer (null clears it), sends an info
 * message when set or an error message when null, and returns 1.
 * ------------------------------------------------------------------------------- */
QUELLON_API int QuellonSetProjectCounterCallback(QuellonCounterFn fn);
QUELLON_API int QuellonSetProjectMessageCallback(QuellonMessageFn fn);
QUELLON_API int QuellonSetCreateIncrementCallback(QuellonCreateIncrementFn fn);
QUELLON_API int QuellonSetPileCapLoadsCallback(QuellonPileCapLoadsFn fn);
QUELLON_API int QuellonSetPileCapDisplacementsCallback(QuellonPileCapDisplacementsFn fn);
QUELLON_API int QuellonSetForceDisplacementStiffnessesCallback(
    QuellonForceDisplacementStiffnessesFn fn);
QUELLON_API int QuellonSetStiffnessMatrixCallback(QuellonStiffnessMatrixFn fn);
QUELLON_API int QuellonSetPileCapCentreOfRotationCallback(QuellonCentreOfRotationFn fn);
/* Clears the counter and message callbacks (the others stay), if a message callback
 * is set; otherwise only logs that nothing was cleared. Returns 1. */
QUELLON_API int QuellonCloseAllCallbacks(void);

/* Progress notifications ("Tolmark2Message"), posted when the XML output's header is
 * written (second parameter -247) and when the final increment is completed (-239); the
 * first parameter is 0.
 * On Windows they are real window messages: the engine posts the message registered
 * under that name (RegisterWindowMessageA) to HWND_BROADCAST, which reaches every
 * top-level window, with wParam 0 and lParam the second parameter. A host receives
 * them in the window procedure of a top-level window (a hidden one will do) when it
 * pumps its messages. The observer is never called there: it would repeat each post.
 * Elsewhere there are no broadcast window messages, so a host that wants them
 * registers an observer, called at each post with the message name and the two
 * parameters. Registering returns 1 on every platform. */
typedef void (*QuellonWindowMessageFn)(const char* name, long wparam, long lparam);
QUELLON_API int QuellonSetWindowMessageObserver(QuellonWindowMessageFn fn);

/* ---------------------------------------------------------------------------------
 * Run. The XML output is required; the TXT report is optional. Result 1 means that the
 * increments ended in an orderly way (including the stop at the axial capacity of the
 * group, which is reported as an error message); 0 that a path was too long (see Paths
 * above), that a file could not be opened or the workspace could not be created, or
 * that the run was refused or ended as a failure:
 * a model whose numerics would be undefined (no piles, a modulus of 0 or less where a
 * pile reaches, a value that is not a finite number, ...) is refused before anything
 * is assembled, and a result that is not a finite number ends the run; in both cases
 * one error message names the pile, layer or element, the model is reset as after any
 * run, and the XML output is left well-formed (a refused model leaves it empty).
 * ------------------------------------------------------------------------------- */
QUELLON_API int QuellonRunAnalysis1(const char* xml_path);
/* A null txt_path runs as QuellonRunAnalysis1. */
QUELLON_API int QuellonRunAnalysis2(const char* xml_path, const char* txt_path);
/* Paths are fixed 260-character blank-padded texts; txt_path may be null; the third
 * argument is ignored. */
QUELLON_API int RUNANALYSISDIRECT(const char* xml_path, const char* txt_path,
                                  const void* unused);

/* ---------------------------------------------------------------------------------
 * Mechanics (beyond the classic interface; opt-in). A run analyses the model by the
 * method as it is defined (mode 0, the default), so that its numbers compare with the
 * system it replaces. Mode 1, corrected, changes exactly four rules where the method's
 * mechanics are wrong, and nothing else:
 *   - the unit twist of the cap is a first-order rotation: the head of a pile moves by
 *     the unit angle times its lever arm from the centre of rotation, at right angles
 *     to it, and each element by the same rule applied to its offset from the head
 *     (not a finite rotation of one radian, which also pulls every pile towards the
 *     centre and gives radial forces under a pure torque);
 *   - torsion between near piles is assembled whenever the group has two or more piles,
 *     not only when the applied torque Mz is non-zero, so that the group stiffness of a
 *     linear model does not depend on its loads;
 *   - a pile takes over the pile matrix of the pile before it only if their section
 *     tables are the same over the whole length (the reinforced length and the
 *     unreinforced section included);
 *   - the elements of a pile raked in both directions move under the twist as a rigid
 *     rotation moves them (not by 1/sqrt(2) of it along one diagonal).
 * Every document of a run in corrected mode says so: the line
 * " Mechanics: corrected" at the end of the banner of the TXT report, the attribute
 * mechanics="corrected" of the XML output's root element, and the LOG line
 * "Mechanics: corrected" at the start of the run. A run in mode 0 writes exactly the
 * documents of an engine without this export (a call of QuellonSetMechanics is echoed
 * to the LOG, like every setter). The warnings cap-torque and
 * shared-pile-matrix of QuellonCheckModel are not given in corrected mode.
 *
 * QuellonSetMechanics: mode 0 or 1; any other value is refused with 0 and an error
 * message, the mode left as it was. Like the callbacks, the mode survives the reset at
 * the end of a run: it holds until it is set again. Refused during a run, like every
 * model setter. Echoed to the LOG.
 * QuellonGetMechanics: the mode in force, 0 or 1.
 * ------------------------------------------------------------------------------- */
QUELLON_API int QuellonSetMechanics(int mode);
QUELLON_API int QuellonGetMechanics(void);

/* ---------------------------------------------------------------------------------
 * Load cases (beyond the classic interface; opt-in). Besides its own loads
 * (QuellonSetActions) a model may hold named load cases, each six loads on the cap and
 * the point where they act. The model's own loads stay the run's own increment: with or
 * without cases the run's XML, TXT and LOG are the same, but for the LOG echo of the
 * setters below and one LOG line naming the cases document. With no case held a run
 * writes exactly what it writes without this block.
 *
 * After the run's own increment every case is worked in the order added, written to the
 * cases document and handed to the load case callback, if one is set. A linear run
 * works every case from its own factorisation: the group flexibility gives the case's
 * cap movement, and the six unit responses of the cap (stresses, soil movements, head
 * loads for each unit cap movement) give everything else as their combination, so a
 * case costs a few passes over vectors of N values. One thing of the system depends
 * on the loads: the torsion between near piles enters the soil flexibility only when a
 * torque about Z (Mz) is applied. The cases that differ from the run's own loads in
 * that respect are worked alike from a second assembly of the blocks between piles and
 * a second factorisation, made once for all of them (in the corrected mechanics, see
 * QuellonSetMechanics, that torsion is assembled under any load, and one system serves
 * every case). The results are those of a separate run with the case's loads as its
 * Actions, to single-precision rounding.
 * A non-linear run works each case along its own path of increments (as many as the
 * run's), one case after another, each from the elastic state, reusing the run's
 * assembled elastic soil and pile matrices and its limiting stresses; a case whose path
 * uses up the axial capacity of the group stops there, with the increments it
 * completed. Each case's results are those of a separate run with its loads.
 *
 * The cases document (XML, ISO-8859-1, CR LF) holds the run's own <Input> echo, then
 *   <Load-Cases count="K" nonlinear="0"> with a <Comment> on how the cases were worked,
 *   and per case <Load-Case number="i" name="..."> with its <Loads> (the lines of
 *   <Input><Loads>), <No-Of-Increments number="I"/> (the run's count) and one
 *   <Increment number="i"> per increment worked, holding the blocks of the run's own
 *   increment: <Pile-Group> (linear runs) and <Piles> under the same flags as in the
 *   run's XML (21, 22; 27, 28 and 31; flag 35 widening them at the last increment),
 *   <Pile-Cap> always; after the last, <Capacity-Reached increment="k"/> when the path
 *   used up the axial capacity of the group.
 * A run with cases and no document path, or whose document can't be created, is
 * refused before anything is assembled.
 *
 * The cases and the document path are part of the model: a run consumes them (they are
 * reset at its end like the loads). The callback survives runs like the other
 * callbacks. The setters are refused during a run, as every model setter.
 * ------------------------------------------------------------------------------- */
/* One case's results, valid during the callback only. Cap vectors in the order X, Y, Z,
 * about X, about Y, about Z. Element tables as the XML gives them: the axial tables have
 * (n + 1) P entries, entry (p - 1)(n + 1) + k - 1 for element k of pile p and
 * k = n + 1 for the toe; the others n P entries, entry (p - 1) n + k - 1. */
typedef struct QuellonLoadCaseResults {
  int number;                      /* 1 to the number of cases, in the order added */
  const char* name;                /* NUL-terminated */
  int piles;                       /* P */
  int elements;                    /* n, shaft elements per pile */
  int increments;                  /* increments worked: 1 in a linear run, fewer than
                                      the run's when the capacity was used up */
  const float* cap_loads;          /* 6: kN, kNm, about the centre of rotation */
  const float* cap_displacements;  /* 6: m, rad */
  /* Per pile (P each), at cap level in the pile's own axes: forces X, Y, Z (kN) and
   * moments about X, Y, Z (kNm), as the XML's <Element number="0">; the pile head's
   * movement X, Y, along the pile (m) and its twist (rad). */
  const float *head_fx, *head_fy, *head_fz, *head_mx, *head_my, *head_mz;
  const float *head_dx, *head_dy, *head_dz, *head_twist;
  /* Per element: stresses (kPa), soil movements (m, rad), loads at the top of each
   * element (kN, kNm; load_axial's toe entry is the base load). */
  const float *stress_axial, *stress_x, *stress_y, *stress_torsion;
  const float *disp_axial, *disp_x, *disp_y, *twist;
  const float *load_axial, *shear_x, *shear_y, *moment_xz, *moment_yz, *torque;
} QuellonLoadCaseResults;
typedef void (*QuellonLoadCaseFn)(const QuellonLoadCaseResults* results);

/* Adds a case: its name (text and count as every text export), loads on the cap (kN,
 * kNm) and the point (x, y, m) where they act, as QuellonSetActions takes them.
 * Result: the number of cases now held, or 0 (error message) for a load or point that
 * is not a finite number, or during a run. */
QUELLON_API int QuellonAddLoadCase(const char* name, int count, double fx, double fy,
                                   double fz, double mx, double my, double mz, double x,
                                   double y);
/* Removes every case. Returns 1 (0 during a run). */
QUELLON_API int QuellonClearLoadCases(void);
/* Result: the number of cases held. */
QUELLON_API int QuellonGetNumberOfLoadCases(void);
/* The path of the cases document, NUL-terminated, at most 260 characters (see Paths).
 * Required when cases are held. */
QUELLON_API int QuellonSetLoadCaseXMLFile(const char* path);
/* Registers the callback called once per case after the case is worked and written
 * (null clears it). Info message when set, error message when null, as the other
 * registrations; returns 1. */
QUELLON_API int QuellonSetLoadCaseCallback(QuellonLoadCaseFn fn);

/* ---------------------------------------------------------------------------------
 * Files
 * ------------------------------------------------------------------------------- */
/* LOG: closes an open LOG first, then creates the file and writes its head. */
QUELLON_API int QuellonCreateLOGFile(const char* path);
QUELLON_API int CREATELOGFILEDIRECT(const char* path260);
QUELLON_API void QuellonCloseLOGFile(void);

/* Text model file: writes the model in hand to a TMK file, which stays open until
 * closed; reads a TMW file into the model (the file is closed after a good read). */
QUELLON_API int QuellonCreateTMKFile(const char* path);
QUELLON_API int WRITETMKFILEDIRECT(const char* path260);
QUELLON_API int READTMWFILEDIRECT(const char* path260);
/* Beyond the classic interface: the number of lines of the last text model file that
 * the reader had taken when it stopped, so that a host can name where a broken file
 * went wrong (on success, the lines read in all). */
QUELLON_API int QuellonGetTMWLineNumber(void);

/* ---------------------------------------------------------------------------------
 * Model check and findings (beyond the classic interface; opt-in, a run does not
 * call them and writes exactly what it writes without them).
 *
 * QuellonCheckModel: checks the model in hand as a run would before it assembles
 * anything (counts, numbers that are not finite, hyperbolic constants, layer order and
 * Poisson's ratios, pile dimensions, rakes and sections in use, the ground where the
 * piles stand (a pile above the ground surface or above the first layer), the soil
 * moduli along the piles and at the rigid layer, the strengths a non-linear run uses,
 * coincident element mid-points and a rigid layer through a load point), without
 * running and without consuming the model: the records, the LOG and the message
 * function stay as they were, and nothing is written to any file. Result 1 when a run
 * would accept the model, 0 when it would refuse it (the reason is a finding of code
 * "refused"), or when called during a run (refused with an error message). When the
 * model passes, the check adds its warnings about places where the method misleads:
 *   short-elements      element length L/n below the shaft diameter (the text gives
 *                       the largest element count that keeps them at or above it);
 *   section-stiffness   modulus implied by EA, EIx or EIy over the shaft section (solid,
 *                       or hollow with the internal diameter) outside 1 to 500 GPa, the
 *                       shear modulus implied by GJ outside 0.4 to 200 GPa, or the
 *                       moduli implied by EA and by EI more than a factor 10 apart;
 *   soil-stiffness      Ev or Eh at mid-layer (5 m below the top of the last layer)
 *                       outside 1 MPa to 20 GPa;
 *   close-piles         piles nearer than 2.5 shaft diameters (the larger), centre to
 *                       centre at ground entry;
 *   shared-pile-matrix  a pile that the engine takes as alike the pile before it (and
 *                       so gives that pile's matrix) although its reinforced length or
 *                       unreinforced section differs;
 *   cap-torque          a torque about the centre of rotation on a group of two or more
 *                       piles: the unit twist is a finite rotation of one radian.
 * Call after the model is set (by the setters or READTMWFILEDIRECT), before the run.
 * Same thread as every other export.
 *
 * QuellonGetDiagnostic: the findings of the last READTMWFILEDIRECT followed by those
 * of the last QuellonCheckModel (a read clears both lists, a check its own). Result:
 * the number of findings. With 1 <= index <= that number and a buffer of size bytes
 * (size > 0), copies finding number index into it, NUL-terminated and cut to size - 1
 * bytes; otherwise a non-null buffer receives an empty text. A finding reads
 *   severity TAB code TAB line TAB text
 * with severity 1 (warning) or 2 (error), a stable short code, the line of the text
 * model file it concerns (0 when it concerns the model) and a text naming the pile,
 * layer, element or token. The reader's codes, which change nothing that it reads:
 *   decimal-comma       a comma between two digits in a line of values ("0,4"): the
 *                       comma separates values, so one number is read as two;
 *   values-dropped      a line holds more values than its read takes (the fourth
 *                       number of the counts line, the cap stiffness, excepted);
 *   values-in-heading   a line that the reader drops as a heading starts with a number;
 *   read-stopped        (error) where a failed read stopped and what it expected there;
 *   count-mismatch      (error, after a failed read) a table of piles, layers or
 *                       ground rows whose values do not match the count announced. */
QUELLON_API int QuellonCheckModel(void);
QUELLON_API int QuellonGetDiagnostic(int index, char* buffer, int size);

QUELLON_API void QuellonCloseTMWFile(void);
QUELLON_API void QuellonCloseTMKFile(void);
/* Called during a run (from a callback), the next two close when the run ends. */
QUELLON_API void QuellonCloseTXTFile(void);
/* Closes TMW, TMK, XML, TXT and last the LOG. */
QUELLON_API void QuellonCloseAllFiles(void);

#ifdef __cplusplus
}
#endif

#endif /* QUELLON_H */
