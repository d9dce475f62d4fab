"""Whether the corpora are what seeds.py writes, and the inputs that were found."""

import os
import unittest

import seeds

CORPUS = os.path.join(os.path.dirname(os.path.abspath(__file__)), "corpus")

# What once showed a mistake: nobody writes these anew.
FOUND = {"desktop_entry": {"blank_at_the_end", "carriage_return_at_the_end",
                           "carriage_return_at_the_end_without_group"},
         "user_defaults": {"what_is_set_last"}}


def content(target, name):
    with open(os.path.join(CORPUS, target, name), "rb") as file:
        return file.read()


class CorpusTest(unittest.TestCase):
    def test_each_target_has_its_corpus(self):
        self.assertEqual(set(os.listdir(CORPUS)), set(seeds.SEEDS))

    def test_a_corpus_holds_the_seeds_and_what_was_found(self):
        for target, written in seeds.SEEDS.items():
            with self.subTest(target):
                self.assertEqual(set(os.listdir(os.path.join(CORPUS, target))),
                                 set(written) | FOUND.get(target, set()))

    def test_each_seed_is_as_it_is_written(self):
        for target, written in seeds.SEEDS.items():
            for name, expected in written.items():
                with self.subTest(f"{target}/{name}"):
                    self.assertEqual(content(target, name), expected)


if __name__ == "__main__":
    unittest.main()
