#!/usr/bin/env python3
"""Renders in segments by the scripts for many machines: test_render_farm.py BRIMLOW-RENDER SCRIPTS [TEST ...].

What is joined must be the whole. GNU parallel is asked where it is installed; Slurm is a stand-in that runs the jobs
it is handed at once, in the shell that Slurm would run them in.
"""
import hashlib
import os
import shutil
import stat
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'player'))
sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'support'))
from packs import plate  # noqa: E402
from production import Production, dynamic, placed  # noqa: E402

RENDER = SCRIPTS = ''
TONE = os.path.join(os.path.dirname(os.path.abspath(__file__)), '..', 'player', 'tone.ogg')
OPTIONS = ('--size', '96x72', '--fps', '10')
SBATCH = '''#!/usr/bin/env bash
# Runs a job, or the jobs of an array; the greatest status of them.
for word in "$@"; do
    case $word in --array=0-*) last=${word#--array=0-} ;; --output=*) output=${word#*=} ;; esac
done
printf '%s\\n' "$*" >>"$SBATCH_LOG"
command=${*: -1}
worst=0
for ((number = 0; number <= ${last:-0}; ++number)); do
    log=${output//%a/$number}
    SLURM_ARRAY_TASK_ID=$number sh -c "$command" >"${log//%%/%}" 2>&1 || worst=$?
done
exit $worst
'''


class FarmTest(unittest.TestCase):
    def setUp(self):
        self.directory = tempfile.TemporaryDirectory(prefix='test farm 100% ')
        self.addCleanup(self.directory.cleanup)
        self.folder = self.directory.name
        show = Production()
        turning = dynamic(show.function((1, 100000, 0.33, 0)))  # degrees each tick
        red = show.material((1, 0.3, 0.1))
        show.layer(show.scene(placed(show.mesh(plate(6)), red, at=(0, 0, -8), turned=(0, 0, turning))), length=130, fov=60)
        show.colour((0, 0, 1), 100)
        show.music = TONE
        os.mkdir(self.path('a show'))
        show.write(self.path('a show'))
        os.mkdir(self.path('bin'))
        self.environment = dict(os.environ, LIBGL_ALWAYS_SOFTWARE='1', LC_ALL='C', BRIMLOW_RENDER=RENDER,
                                PATH=self.path('bin') + os.pathsep + os.environ['PATH'], SBATCH_LOG=self.path('jobs'))
        self.environment.pop('LP_NUM_THREADS', None)

    def path(self, *names):
        return os.path.join(self.folder, *names)

    def run_words(self, *words):
        return subprocess.run(words, cwd=self.folder, env=self.environment, stdin=subprocess.DEVNULL,
                              stdout=subprocess.PIPE, stderr=subprocess.PIPE, timeout=300, check=False)

    def script(self, name, *words):
        return self.run_words(os.path.join(SCRIPTS, name), *words)

    def done(self, *words):
        run = self.run_words(*words)
        self.assertEqual(run.returncode, 0, run.stderr)
        return run

    def script_done(self, name, *words):
        return self.done(os.path.join(SCRIPTS, name), *words)

    def told(self, status, line, name, *words):
        run = self.script(name, *words)
        self.assertEqual((run.returncode, run.stderr.decode().splitlines()[-1:]), (status, [line]))

    def whole(self, output):
        self.done(RENDER, '-qo', output, *OPTIONS, '--', 'a show')

    def pictures(self, folder):
        found = {}
        for name in os.listdir(self.path(folder)):
            if name.endswith('.png'):
                with open(self.path(folder, name), 'rb') as file:
                    found[name] = file.read()
        return found

    def streams(self, name):
        """The frames with their times, and the sound."""
        frames = self.done('ffmpeg', '-v', 'error', '-i', name, '-map', '0:v', '-f', 'framemd5', '-').stdout
        sound = self.done('ffmpeg', '-v', 'error', '-i', name, '-map', '0:a', '-f', 's16le', '-').stdout
        return frames, hashlib.md5(sound).hexdigest()

    def assert_joined(self, name):
        self.whole('whole.mkv')
        self.assertGreater(self.streams('whole.mkv')[0].count(b'\n'), 23)
        self.assertEqual(self.streams(name), self.streams('whole.mkv'))
        self.assertFalse(os.path.exists(self.path(name + '.parts')))

    def stand_in(self, name, text):
        with open(self.path('bin', name), 'w', encoding='utf-8') as file:
            file.write(text)
        os.chmod(file.name, stat.S_IRWXU)


class SegmentTest(FarmTest):
    def test_scripts_are_bash_that_can_be_read(self):
        for name in ('render-segment.sh', 'render-join.sh', 'render-parallel.sh', 'render-slurm.sh'):
            self.done('bash', '-n', os.path.join(SCRIPTS, name))

    def test_pictures_of_all_segments_are_those_of_the_whole(self):
        for number in range(7):
            self.script_done('render-segment.sh', str(number), '7', 'parts/%03d.png', 'a show', *OPTIONS)
        self.whole('whole/%03d.png')
        self.assertEqual(len(set(self.pictures('whole').values())), 14)  # 13 that move, then it is blue
        self.assertEqual(self.pictures('parts'), self.pictures('whole'))

    def test_joined_parts_are_the_whole_in_frames_times_and_sound(self):
        for number in (2, 0, 1):
            self.script_done('render-segment.sh', str(number), '3', 'my show.mkv', 'a show', *OPTIONS)
        self.assertFalse(os.path.exists(self.path('my show.mkv')))
        self.script_done('render-join.sh', '3', 'my show.mkv')
        self.assert_joined('my show.mkv')

    def test_a_part_that_is_missing_is_told_and_nothing_is_joined(self):
        self.script_done('render-segment.sh', '1', '2', 'a.mkv', 'a show', *OPTIONS)
        self.told(2, 'Error: a.mkv.parts/part-00000.mkv is missing: render segment 0 again.', 'render-join.sh', '2',
                  'a.mkv')
        self.assertFalse(os.path.exists(self.path('a.mkv')))
        self.assertTrue(os.path.exists(self.path('a.mkv.parts', 'part-00001.mkv')))

    def test_an_output_without_parts_is_told(self):
        self.told(2, 'Error: b.mkv has no parts: the folder b.mkv.parts is missing.', 'render-join.sh', '2', 'b.mkv')

    def test_misuse_is_one_line(self):
        segment = 'render-segment.sh'
        self.told(2, 'Error: render-segment.sh takes NUMBER COUNT OUTPUT PACK [OPTION ...].', segment, '0', '2', 'a.mkv')
        self.told(2, 'Error: the count of segments is a number from 1 to 99999, not "0".', segment, '0', '0', 'a.mkv', 'p')
        self.told(2, 'Error: a segment is a number from 0 to 1, not "2".', segment, '2', '2', 'a.mkv', 'p')
        self.told(2, 'Error: a segment is a number from 0 to 1, not "x".', segment, 'x', '2', 'a.mkv', 'p')
        self.told(2, 'Error: segments go to pictures like frames/%05d.png or to an .mkv, not to "a.mp4".', segment, '0',
                  '2', 'a.mp4', 'p')
        self.told(2, 'Error: render-join.sh takes COUNT OUTPUT.', 'render-join.sh', '2')
        for name in ('render-parallel.sh', 'render-slurm.sh'):
            self.assertEqual(self.script(name, 'a.mkv').returncode, 2)
            self.assertEqual(self.script(name, '-x', 'a.mkv', 'p').returncode, 2)
        self.told(2, 'Error: -j takes a number from 1 to 9999, not "many".', 'render-parallel.sh', '-j', 'many', 'a.mkv',
                  'p')
        self.told(2, 'Error: -c takes a number from 1 to 9999, not "0".', 'render-slurm.sh', '-c', '0', 'a.mkv', 'p')


@unittest.skipUnless(shutil.which('parallel'), 'GNU parallel is not installed')
class ParallelTest(FarmTest):
    def test_pictures_and_videos_are_those_of_the_whole(self):
        self.script_done('render-parallel.sh', '-j', '2', 'parts 1/%03d.png', 'a show', *OPTIONS)
        self.whole('whole/%03d.png')
        self.assertEqual(self.pictures('parts 1'), self.pictures('whole'))
        self.script_done('render-parallel.sh', '-j', '2', '-n', '3', 'my show.mkv', 'a show', *OPTIONS)
        self.assert_joined('my show.mkv')

    def test_a_segment_that_fails_fails_the_run(self):
        for output in ('a.mkv', '%d.png'):
            run = self.script('render-parallel.sh', '-n', '3', output, 'a show', '--size', '5')
            self.assertNotEqual(run.returncode, 0)
            self.assertIn(b'--size takes a size', run.stderr)
        self.assertFalse(os.path.exists(self.path('a.mkv')))


class SlurmTest(FarmTest):
    def test_pictures_and_videos_are_those_of_the_whole(self):
        self.stand_in('sbatch', SBATCH)
        self.script_done('render-slurm.sh', '-n', '3', '-c', '2', 'parts 1/%03d.png', 'a show', *OPTIONS)
        self.whole('whole/%03d.png')
        self.assertEqual(self.pictures('parts 1'), self.pictures('whole'))
        self.assertTrue(os.path.exists(self.path('parts 1', '%03d.png.2.log')))
        with open(self.path('jobs'), encoding='utf-8') as file:
            job = file.readline()
        self.assertIn('--array=0-2 --cpus-per-task=2', job)
        self.assertIn('--output=parts 1/%%03d.png.%a.log', job)
        self.script_done('render-slurm.sh', '-n', '2', 'my show.mkv', 'a show', *OPTIONS)
        self.assert_joined('my show.mkv')

    def test_a_segment_that_fails_fails_the_run_and_nothing_is_joined(self):
        self.stand_in('sbatch', SBATCH)
        self.told(2, 'Error: a segment was not rendered: see a.mkv.*.log.', 'render-slurm.sh', '-n', '2', 'a.mkv', 'a show',
                  '--size', '5')
        with open(self.path('a.mkv.1.log'), encoding='utf-8') as file:
            self.assertIn('--size takes a size', file.read())
        with open(self.path('jobs'), encoding='utf-8') as file:
            self.assertEqual(len(file.readlines()), 1)


def main():
    global RENDER, SCRIPTS
    RENDER, SCRIPTS = (os.path.abspath(path) for path in sys.argv[1:3])
    del sys.argv[1:3]
    unittest.main(verbosity=1)


if __name__ == '__main__':
    main()
