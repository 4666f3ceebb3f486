"""What `./test` does, in which order, and which packages each step needs."""
import dataclasses


@dataclasses.dataclass(frozen=True)
class Preset:
    name: str
    packages: tuple  # lists in tools/packages
    lane: str  # programs of one lane run one preset after the other
    jobs: int  # test programs at a time: those under Wine wait more than they compute
    one_processor: bool = False  # each program under Wine keeps to one processor: quicker (tools/wine-prefix)


# In the order in which they are built. The programs under Wine take longest and mostly wait, so their
# presets come first: the others are built meanwhile. The programs that are handed out are tested with all
# processors, so that their threads really run at the same time.
PRESETS = (
    Preset("windows", ("windows", "test", "package", "fleet"), "wine", 5),
    Preset("windows-debug", ("windows", "test"), "wine", 8, one_processor=True),
    Preset("native", ("native", "test", "browser"), "host", 2),
    Preset("native-tsan", ("native", "test"), "host", 2),
    Preset("fuzz", ("native", "fuzz"), "host", 2),
)
QUICK = ("windows-debug", "native")  # the quickest to build; only the packages need windows
LINT_PACKAGES = ("lint",)
LINT_NEEDS = ("windows-debug", "native")  # whose compile commands the linter reads


def find(name):
    for preset in PRESETS:
        if preset.name == name:
            return preset
    return Preset(name, ("windows", "native", "test", "package", "browser", "fuzz"), "wine", 2)


def packages(presets, lint):
    wanted = []
    for preset in presets:
        wanted += [item for item in preset.packages if item not in wanted]
    if lint:
        wanted += [item for item in LINT_PACKAGES if item not in wanted]
    return wanted
