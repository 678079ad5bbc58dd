"""Writes what N terminals have sent within the last day as OpenMetrics, for promtool to make blocks of.

Each terminal has the sensors of the simulated one. What is wrong with a terminal follows from its number, so that tests
know it, and so do the curves.
"""
import math

SENSORS = [  # name, family, around, swing, thresholds (bound, level, value)
    (
        'CPU Temperature(00000010)',
        'temperature',
        54,
        6,
        [
            ('lower', 'noncritical', 5),
            ('lower', 'critical', 0),
            ('upper', 'noncritical', 85),
            ('upper', 'critical', 95),
            ('upper', 'fatal', 105),
        ],
    ),
    (
        'Board Temperature(00000011)',
        'temperature',
        38,
        3,
        [('lower', 'critical', 0), ('upper', 'noncritical', 60), ('upper', 'critical', 70), ('upper', 'fatal', 80)],
    ),
    (
        'Memory Temperature(00000012)',
        'temperature',
        41,
        3,
        [('upper', 'noncritical', 80), ('upper', 'critical', 90), ('upper', 'fatal', 95)],
    ),
    (
        'Power Supply Temperature(00000013)',
        'temperature',
        44.7,
        2.2,
        [('upper', 'noncritical', 75), ('upper', 'critical', 85)],
    ),
    (
        'CPU Core Voltage(00000020)',
        'voltage',
        1.048,
        0.03,
        [
            ('lower', 'noncritical', 0.85),
            ('lower', 'critical', 0.8),
            ('upper', 'noncritical', 1.25),
            ('upper', 'critical', 1.3),
        ],
    ),
    (
        '+12 V(00000021)',
        'voltage',
        12.03,
        0.08,
        [
            ('lower', 'noncritical', 11.4),
            ('lower', 'critical', 10.8),
            ('upper', 'noncritical', 12.6),
            ('upper', 'critical', 13.2),
        ],
    ),
    (
        '+5 V(00000022)',
        'voltage',
        5.016,
        0.024,
        [
            ('lower', 'noncritical', 4.75),
            ('lower', 'critical', 4.5),
            ('upper', 'noncritical', 5.25),
            ('upper', 'critical', 5.5),
        ],
    ),
    (
        '+3.3 V(00000023)',
        'voltage',
        3.308,
        0.012,
        [
            ('lower', 'noncritical', 3.135),
            ('lower', 'critical', 2.97),
            ('upper', 'noncritical', 3.465),
            ('upper', 'critical', 3.63),
        ],
    ),
    ('Clock Battery(00000024)', 'voltage', 3.056, 0.002, [('lower', 'noncritical', 2.7), ('lower', 'critical', 2.4)]),
    (
        '+12 V Current(00000030)',
        'current',
        2.6,
        0.4,
        [('upper', 'noncritical', 5.5), ('upper', 'critical', 6), ('upper', 'fatal', 6.5)],
    ),
    ('Printer Port Current(00000031)', 'current', 0.3, 0.2, [('upper', 'noncritical', 3), ('upper', 'critical', 3.5)]),
    (
        'CPU Fan(00000040)',
        'fan_speed',
        2600,
        150,
        [('lower', 'noncritical', 1200), ('lower', 'critical', 900), ('lower', 'fatal', 600)],
    ),
    (
        'Chassis Fan(00000041)',
        'fan_speed',
        1820,
        60,
        [('lower', 'noncritical', 900), ('lower', 'critical', 600), ('lower', 'fatal', 300)],
    ),
    ('Cabinet Cover(00000050)', 'value', 0, 0, [('upper', 'critical', 1)]),
]
READING = {
    'temperature': 'zelsensors_temperature_celsius',
    'voltage': 'zelsensors_voltage_volts',
    'current': 'zelsensors_current_amperes',
    'fan_speed': 'zelsensors_fan_speed_rpm',
    'value': 'zelsensors_sensor_value',
}
THRESHOLD = {
    'temperature': 'zelsensors_temperature_threshold_celsius',
    'voltage': 'zelsensors_voltage_threshold_volts',
    'current': 'zelsensors_current_threshold_amperes',
    'fan_speed': 'zelsensors_fan_speed_threshold_rpm',
    'value': 'zelsensors_sensor_threshold_value',
}
LEVELS = {'noncritical': 1, 'critical': 2, 'fatal': 3}
KINDS = {3: 'hot', 7: 'warm', 11: 'fatal', 17: 'gone', 23: 'failing', 29: 'full', 31: 'missing', 37: 'unread'}


def kind_of(number):
    """Of 41 terminals, one of each kind; the terminals of shop 7 are all gone."""
    return 'gone' if (number // 10) == 7 else KINDS.get(number % 41, 'healthy')


def state_of(number):
    return {'warm': 1, 'hot': 2, 'fatal': 3, 'failing': 4, 'missing': 4, 'gone': 5}.get(kind_of(number), 0)


def instance_of(number):
    return f'till{number % 10 + 1}.shop{number // 10:04}:9100'


def escape(text):
    return text.replace('\\', '\\\\').replace('"', '\\"').replace('\n', '\\n')


class Families:
    def __init__(self):
        self.lines = {}

    def add(self, name, labels, points):
        text = ','.join(f'{key}="{escape(value)}"' for key, value in labels.items())
        lines = self.lines.setdefault(name, [])
        for time, value in points:
            lines.append(f'{name}{{{text}}} {value:.6g} {time}\n')

    def write(self, path):
        with open(path, 'w', encoding='utf-8') as file:
            for name, lines in self.lines.items():
                kind = 'counter' if name.endswith('_total') else 'gauge'
                file.write(f'# TYPE {name.removesuffix("_total")} {kind}\n')
                file.writelines(lines)
            file.write('# EOF\n')


def reading_at(number, sensor, position):
    """The reading at a position of the day, 0 to 1; what is wrong has begun at three quarters."""
    name, _, around, swing, limits = sensor
    kind = kind_of(number)
    noise = math.sin(78.233 * int(position * 288) + 12.9898 * number + around) * 43758.5453 % 2 - 1
    value = around + swing * 0.7 * math.sin(position * 6.283 * 2 + number) + swing * 0.3 * noise
    rise = max(0, (position - 0.75) * 4)
    if name.startswith('CPU T') and kind in ('hot', 'warm', 'fatal'):
        value += {'warm': 36, 'hot': 46, 'fatal': 58}[kind] * min(1, rise * 2)
    if name.startswith('CPU Fan') and kind in ('hot', 'fatal'):
        value -= 1750 * min(1, rise * 2)
    if swing == 0:
        return value
    if any(word in name for word in ('Voltage', ' V(', 'Battery')):
        return round(value, 3)
    return round(value, 1 if 'Supply' in name else 2 if 'Current' in name else 0)


def severity_of(value, limits):
    return max(
        [0]
        + [LEVELS[level] for bound, level, limit in limits if (value > limit if bound == 'upper' else value < limit)]
    )


def terminal(families, number, times, full, extra=None):
    """`times`: the times of all samples, the last is now; `full`: with thresholds and all readings."""
    kind = kind_of(number)
    labels = {'job': 'terminals', 'instance': instance_of(number), 'shop': f'{number // 10:04}'}
    now = times[-1:]
    families.add('up', labels, [(time, 0 if kind == 'gone' else 1) for time in now])
    if kind in ('gone', 'missing'):
        return
    for collector in ('sensors', 'event_log'):
        failing = kind == 'failing' and collector == 'sensors'
        families.add(
            'zelsensors_scrape_success',
            {**labels, 'collector': collector},
            [(time, 0 if failing else 1) for time in now],
        )
        families.add(
            'zelsensors_scrape_status',
            {**labels, 'collector': collector},
            [(time, 1 if failing else 0) for time in now],
        )
    families.add(
        'zelsensors_build_info', {**labels, 'version': '3.10.15', 'chip': 'system'}, [(time, 1) for time in now]
    )
    families.add('zelsensors_event_log_full', labels, [(time, 1 if kind == 'full' else 0) for time in now])
    families.add('zelsensors_event_log_valid', labels, [(time, 1) for time in now])
    families.add('zelsensors_event_log_lines', labels, [(time, 29) for time in now])
    if kind == 'failing':
        return
    sensors = SENSORS + (extra or [])
    families.add('zelsensors_sensors', labels, [(time, len(sensors)) for time in now])
    families.add('zelsensors_sensors_failed', labels, [(time, 1 if kind == 'unread' else 0) for time in now])
    gravest = 0
    for sensor in sensors:
        name, family, _, _, limits = sensor
        own = {**labels, 'sensor': name}
        if full:
            for bound, level, limit in limits:
                families.add(
                    THRESHOLD[family], {**own, 'bound': bound, 'level': level}, [(time, limit) for time in now]
                )
        if kind == 'unread' and name.startswith('Memory'):
            continue
        points = [(time, reading_at(number, sensor, 1 - (times[-1] - time) / 86400)) for time in times]
        if full or family == 'temperature':
            families.add(READING[family], {**own, **({'unit': ''} if family == 'value' else {})}, points)
        severity = severity_of(points[-1][1], limits)
        families.add('zelsensors_sensor_severity', own, [(time, severity) for time in now])
        if severity > 0:
            families.add('zelsensors_sensor_past_threshold', own, [(time, severity) for time in now])
        gravest = max(gravest, severity)
    families.add('zelsensors_severity', labels, [(time, gravest) for time in now])


def write(path, count, now, full_days=(), extra=None):
    """`full_days`: the numbers of terminals with a day of readings; `extra`: more sensors of the first of them."""
    families = Families()
    for number in range(count):
        full = number in full_days
        times = [now - 300 * step for step in range(287, -1, -1)] if full else [now - 60, now]
        terminal(families, number, times, full or count <= 500, extra if full_days and number == full_days[0] else None)
    families.write(path)
