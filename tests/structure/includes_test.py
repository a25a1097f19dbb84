#!/usr/bin/env python3
"""The include checker itself: what it lets pass and what it refuses."""

import pathlib
import tempfile
import unittest

import includes


class Arrows(unittest.TestCase):
    def test_downward_arrows_pass(self):
        for includer, included in [
            ("vesk/hmm/HMM.h", "vesk/math/MatrixT.h"),
            ("vesk/hmm/Passes.cpp", "vesk/hmm/internal/Passes.h"),
            ("vesk/leftright/TextFile.cpp", "vesk/base/internal/InputFile.h"),
            ("vesk/leftright/ScaledPasses.cpp", "vesk/hmm/internal/Passes.h"),
            ("vesk/recognition/ModelFile.cpp", "vesk/leftright/LeftRightHMM.h"),
            ("vesk/quantizer/VectorQuantizer2D.h", "vesk/Export.h"),
            ("veskcore/KMeansMotionVec.cpp", "vesk/quantizer/KMeansMotionVec.h"),
            ("veskcore/KMeansMotionVec.cpp", "veskcore/internal/NearestCentre.h"),
            ("veskkit/training/GestureTrainer.h", "vesk/leftright/LeftRightHMM.h"),
            ("veskkit/io/JsonLines.cpp", "nlohmann/json.hpp"),
            ("veskkit/traces/Resampler.cpp", "cmath"),
            ("tools/Train.cpp", "veskkit/training/GestureTrainer.h"),
            ("tools/OutputFile.cpp", "unistd.h"),
            ("python/src/Hmm.cpp", "vesk/hmm/HMM.h"),
            ("python/src/Hmm.cpp", "python/src/Arrays.h"),
            ("python/src/Training.cpp", "veskkit/training/TrainingPlan.h"),
            ("python/src/Arrays.cpp", "pybind11/numpy.h"),
        ]:
            with self.subTest(includer=includer, included=included):
                self.assertIsNone(includes.problem(includer, included))

    def test_upward_and_sideward_arrows_are_refused(self):
        for includer, included in [
            ("vesk/base/InputFile.cpp", "vesk/hmm/HMM.h"),
            ("vesk/math/MatrixT.h", "vesk/hmm/HMM.h"),
            ("vesk/hmm/HMM.cpp", "vesk/leftright/LeftRightHMM.h"),
            ("vesk/leftright/Training.cpp", "vesk/recognition/RecognitionModelHMM.h"),
            ("vesk/quantizer/Directions.cpp", "vesk/hmm/HMM.h"),
            ("vesk/hmm/HMM.cpp", "vesk/quantizer/VectorQuantizer2D.h"),
            ("vesk/quantizer/Codebook.cpp", "veskcore/internal/NearestCentre.h"),
            ("vesk/hmm/HMM.cpp", "veskkit/traces/Trace.h"),
            ("veskcore/KMeansMotionVec.cpp", "vesk/math/MatrixT.h"),
            ("veskcore/KMeansMotionVec.cpp", "vesk/base/internal/KeptForever.h"),
            ("veskkit/training/GestureTrainer.cpp", "tools/Progress.h"),
            ("veskkit/training/GestureTrainer.cpp", "veskcore/internal/NearestCentre.h"),
            ("veskkit/training/GestureTrainer.cpp", "python/src/Arrays.h"),
            ("tools/Train.cpp", "python/src/Arrays.h"),
            ("python/src/Training.cpp", "tools/Progress.h"),
            ("python/src/Hmm.cpp", "vesk/base/internal/InputFile.h"),
        ]:
            with self.subTest(includer=includer, included=included):
                self.assertIsNotNone(includes.problem(includer, included))

    def test_internal_headers_stay_inside(self):
        for includer, included in [
            ("veskkit/training/GestureTrainer.cpp", "vesk/hmm/internal/Passes.h"),
            ("tools/Train.cpp", "veskkit/io/internal/JsonText.h"),
            ("vesk/hmm/HMM.h", "vesk/hmm/internal/Passes.h"),
            ("veskkit/io/JsonLines.h", "veskkit/io/internal/JsonText.h"),
            ("python/src/Hmm.cpp", "vesk/hmm/internal/Passes.h"),
        ]:
            with self.subTest(includer=includer, included=included):
                self.assertIsNotNone(includes.problem(includer, included))

    def test_what_is_not_the_language_stays_where_it_is_needed(self):
        for includer, included in [
            ("vesk/hmm/HMM.cpp", "fmt/format.h"),
            ("veskkit/training/GestureTrainer.cpp", "nlohmann/json.hpp"),
            ("vesk/hmm/HMM.cpp", "boost/any.hpp"),
            ("vesk/hmm/HMM.cpp", "format"),
            ("vesk/base/OutputFile.cpp", "unistd.h"),
            ("veskkit/io/JsonLines.cpp", "pybind11/numpy.h"),
            ("python/src/Traces.cpp", "nlohmann/json.hpp"),
        ]:
            with self.subTest(includer=includer, included=included):
                self.assertIsNotNone(includes.problem(includer, included))

    def test_a_file_outside_the_layers_is_refused(self):
        self.assertIsNotNone(includes.problem("vesk/io/File.cpp", "vector"))
        self.assertIsNotNone(includes.problem("vesk/hmm/HMM.cpp", "vesk/io/File.h"))


class Files(unittest.TestCase):
    def test_reads_all_spellings_from_files(self):
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder).resolve()
            (root / "src/vesk/math/internal").mkdir(parents=True)
            (root / "src/vesk/hmm").mkdir(parents=True)
            (root / "python/src").mkdir(parents=True)
            (root / "python/src/Arrays.h").write_text("#include <fmt/format.h>\n")
            (root / "python/src/Hmm.cpp").write_text('#include "Arrays.h"\n')
            (root / "src/vesk/hmm/HMM.h").write_text("#include <vector>\n")
            (root / "src/vesk/math/internal/Table.h").write_text("// #include <vesk/hmm/HMM.h>\n")
            (root / "src/vesk/math/Matrix.cpp").write_text(
                '#include "internal/Table.h"\n# include "../hmm/HMM.h"\n#include <vesk/hmm/HMM.h>')
            problems, count = includes.check(root)
        self.assertEqual(6, count)
        self.assertEqual([
            "python/src/Arrays.h: <fmt/format.h>: only veskkit/io/, veskkit/report/, tools/ may",
            "src/vesk/math/Matrix.cpp: <../hmm/HMM.h>: vesk/math may not depend on vesk/hmm",
            "src/vesk/math/Matrix.cpp: <vesk/hmm/HMM.h>: vesk/math may not depend on vesk/hmm",
        ], problems)


if __name__ == "__main__":
    unittest.main()
