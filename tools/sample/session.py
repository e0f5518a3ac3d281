"""One session of patcher-stdio: sends requests, prints the launcher's output and waits for lines of it."""
import subprocess


class Session:
    def __init__(self, program):
        self.process = subprocess.Popen([program, "--readable"], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
                                        text=True, encoding="utf-8")

    def request(self, json):
        print("  > " + json, flush=True)
        self.process.stdin.write(json + "\n")
        self.process.stdin.flush()

    def wait_for(self, *beginnings):
        """Prints lines until one starts with one of these texts, and returns that line."""
        for line in self.process.stdout:
            line = line.rstrip("\n")
            print("    " + line, flush=True)
            if line.startswith(beginnings):
                return line
        raise RuntimeError("the launcher ended before it printed " + " or ".join(beginnings))

    def end(self):
        """Ends the input; the launcher ends as soon as nothing is running."""
        self.process.stdin.close()
        for line in self.process.stdout:
            print("    " + line.rstrip("\n"), flush=True)
        if self.process.wait() != 0:
            raise RuntimeError(f"the launcher ended with code {self.process.returncode}")
