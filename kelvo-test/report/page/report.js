// SPDX-License-Identifier: MIT
'use strict';
// What can be read can be read without this; here are zoom, keys and the details of one event.
(() => {
    const lanes = document.getElementById('lanes');
    const detail = document.getElementById('detail');
    const begin = Number(lanes.dataset.begin);
    const all = Number(lanes.dataset.seconds);
    const shortest = Math.min(all, 0.01);
    let from = 0;
    let to = all;
    let chosen = null;
    let openedFrom = null;

    // The shortest of 1, 2, 5, 10, ... seconds, or a part of them, whose ticks have room.
    const stepFor = (seconds, room) => {
        const least = seconds / Math.max(room, 1);
        const power = 10 ** Math.floor(Math.log10(least));
        return [1, 2, 5, 10].map(factor => factor * power).find(step => step >= least);
    };

    const drawAxis = axis => {
        axis.replaceChildren();
        const step = stepFor(to - from, Math.floor(axis.clientWidth / 90));
        const digits = Math.min(Math.max(0, -Math.floor(Math.log10(step) + 1e-9)), 6);
        const first = Math.ceil((begin + from) / step);
        // Counted, as numbers may be so large that one more makes no difference.
        for (let i = 0; i < 100 && (first + i) * step <= begin + to; ++i) {
            const time = (first + i) * step;
            const label = document.createElement('span');
            label.style.left = (time - begin - from) / (to - from) * 100 + '%';
            label.textContent = time.toFixed(digits);
            axis.append(label);
        }
    };

    const show = (newFrom, newTo) => {
        const length = Math.min(Math.max(newTo - newFrom, shortest), all);
        from = Math.min(Math.max(newFrom, 0), all - length);
        to = from + length;
        for (const svg of lanes.querySelectorAll('svg'))
            svg.setAttribute('viewBox', `${from} 0 ${length} ${svg.viewBox.baseVal.height}`);
        lanes.querySelectorAll('.ticks').forEach(drawAxis);
    };

    const timeOf = mark => {
        const shape = mark.querySelector('rect, path');
        return Number(shape.getAttribute('x') ?? shape.getAttribute('d').slice(1).split(' ')[0]);
    };

    const isInSight = mark => timeOf(mark) >= from && timeOf(mark) <= to;
    // Around what is chosen, where that is in sight.
    const zoom = (factor, center = chosen && isInSight(chosen) ? timeOf(chosen) : (from + to) / 2) =>
        show(center - (center - from) * factor, center + (to - center) * factor);
    const move = share => show(from + (to - from) * share, to + (to - from) * share);

    const line = (name, text) => {
        const term = document.createElement('dt');
        const value = document.createElement('dd');
        term.textContent = name;
        value.textContent = text;
        return [term, value];
    };

    // JSON in lines, letter for letter: taken apart and put together again, large numbers would come out as others, and
    // what is written by its number because it cannot be seen would not be seen again.
    const inLines = json => {
        let depth = 0;
        let inText = false;
        let lines = '';
        const newLine = () => '\n' + '  '.repeat(Math.min(depth, 20));
        for (let i = 0; i < json.length; ++i) {
            const character = json[i];
            if (inText || character === '"') {
                inText = inText ? character !== '"' : true;
                lines += character === '\\' ? character + json[++i] : character;
            } else if (['[]', '{}'].includes(json.slice(i, i + 2))) {
                lines += character + json[++i];
            } else if ('[{'.includes(character)) {
                ++depth;
                lines += character + newLine();
            } else if (']}'.includes(character)) {
                --depth;
                lines += newLine() + character;
            } else if (character === ',') {
                lines += character + newLine();
            } else {
                lines += character === ':' ? ': ' : character;
            }
        }
        return lines;
    };

    const open = (id, opener) => {
        const row = document.getElementById(id);
        if (!row)
            return;
        document.querySelector('tr.chosen')?.classList.remove('chosen');
        row.classList.add('chosen');
        const texts = [...row.cells].map(cell => cell.textContent.trim());
        const names = ['Seconds', 'Of', 'Kind', 'Name'];
        detail.querySelector('dl').replaceChildren(
            ...names.flatMap((name, i) => line(name, texts[i])), ...line('Arguments', inLines(texts[4])));
        detail.querySelector('a').href = '#' + id;
        detail.dataset.event = id.slice(1);
        openedFrom = opener ?? openedFrom;
        // Who goes on from event to event stays at the button.
        const isInUse = !detail.hidden && detail.contains(document.activeElement);
        detail.hidden = false;
        if (!isInUse)
            detail.querySelector('h2').focus();
    };

    const close = () => {
        detail.hidden = true;
        openedFrom?.focus();
    };

    const choose = mark => {
        chosen?.classList.remove('chosen');
        chosen = mark;
        mark.classList.add('chosen');
        mark.closest('.renderer').querySelector('output').textContent = mark.querySelector('title').textContent;
        const time = timeOf(mark);
        if (!isInSight(mark))
            show(time - (to - from) / 2, time + (to - from) / 2);
    };

    // From mark to mark of one renderer, by time; the first is one in sight.
    const step = (group, forward) => {
        group.marks ??= [...group.querySelectorAll('.lane a')].sort((a, b) => timeOf(a) - timeOf(b));
        const index = group.marks.indexOf(chosen);
        const first = forward ? group.marks.find(mark => timeOf(mark) >= from)
            : group.marks.findLast(mark => timeOf(mark) <= to);
        const next = index < 0 ? first : group.marks[index + (forward ? 1 : -1)];
        if (next)
            choose(next);
    };

    const actions = {
        in: () => zoom(1 / 2), out: () => zoom(2), left: () => move(-0.25), right: () => move(0.25), all: () => show(0, all),
        before: () => open('e' + (Number(detail.dataset.event) - 1)),
        after: () => open('e' + (Number(detail.dataset.event) + 1)),
        close,
    };

    document.addEventListener('click', event => {
        const button = event.target.closest('[data-do]');
        const mark = event.target.closest('.lane a');
        const link = event.target.closest('a[href^="#e"]');
        const row = event.target.closest('#events tbody tr');
        if (button) {
            actions[button.dataset.do]();
        } else if (mark) {
            event.preventDefault();
            choose(mark);
            open(mark.getAttribute('href').slice(1), mark.closest('.renderer'));
        } else if (link) {
            reveal(link.getAttribute('href').slice(1));
        } else if (row && getSelection().isCollapsed) {
            open(row.id, row.closest('.wide'));
        }
    });

    document.addEventListener('keydown', event => {
        if (event.ctrlKey || event.altKey || event.metaKey)
            return;
        if (event.key === 'Escape' && !detail.hidden) {
            close();
            return;
        }
        const group = event.target.closest('.renderer');
        if (!group)
            return;
        const keys = {
            '+': actions.in, '=': actions.in, '-': actions.out, '0': actions.all,
            ArrowLeft: () => event.shiftKey ? move(-0.25) : step(group, false),
            ArrowRight: () => event.shiftKey ? move(0.25) : step(group, true),
            Enter: () => group.contains(chosen) && open(chosen.getAttribute('href').slice(1), group),
        };
        if (!keys[event.key])
            return;
        event.preventDefault();
        keys[event.key]();
    });

    lanes.addEventListener('wheel', event => {
        const svg = event.target.closest('svg');
        if (!svg || !event.ctrlKey || event.deltaY === 0)
            return;
        event.preventDefault();
        const box = svg.getBoundingClientRect();
        zoom(event.deltaY < 0 ? 0.8 : 1.25, from + (event.clientX - box.left) / box.width * (to - from));
    }, { passive: false });

    // Not every browser opens what a link leads into.
    const reveal = id => document.getElementById(id)?.closest('details')?.setAttribute('open', '');

    document.documentElement.classList.add('has-script');
    addEventListener('resize', () => show(from, to));
    show(0, all);
    if (location.hash) {
        reveal(location.hash.slice(1));
        document.getElementById(location.hash.slice(1))?.scrollIntoView();
    }
})();
