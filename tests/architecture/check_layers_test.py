#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""The check of the layers must see the faults it exists for."""
import unittest

from check_layers import LAYERS, layer_faults

RIGHT = [(f"{layer}-one", [layer]) for layer in LAYERS]


class Layers(unittest.TestCase):
    def test_one_layer_each_is_fine(self):
        self.assertEqual(layer_faults(RIGHT + [("scripts", ["scripts"]), ("media", ["support"])]), [])
        self.assertEqual(layer_faults(RIGHT + [("unit-slow", ["unit", "slow"])]), [])

    def test_a_test_without_a_layer_is_a_fault(self):
        self.assertEqual(layer_faults(RIGHT + [("unit-two", [])]), ["unit-two: has the labels of 0 layers (none)"])
        self.assertTrue(layer_faults(RIGHT + [("unit-two", ["slow"])]))

    def test_two_layers_are_a_fault(self):
        self.assertEqual(layer_faults(RIGHT + [("unit-two", ["unit", "model"])]),
                         ["unit-two: has the labels of 2 layers (unit, model)"])

    def test_the_name_tells_the_layer(self):
        self.assertTrue(layer_faults(RIGHT + [("unit-two", ["integration"])]))
        self.assertTrue(layer_faults(RIGHT + [("unity", ["unit"])]))

    def test_a_layer_without_tests_is_a_fault(self):
        self.assertEqual(layer_faults(RIGHT[1:]), ["unit: no test has this label"])


if __name__ == "__main__":
    unittest.main()
